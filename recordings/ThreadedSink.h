#pragma once

#include "recordings/ImageWriter.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace velmo::recordings {

/// A sink whose pictures another one takes on a thread of its own: what makes the next picture does not wait
/// for the last to be packed. Pictures keep their order; no more than a few wait.
///
/// An error of the other thread comes out of the next `write` or of `finish`, and ends both.
class ThreadedSink : public ImageWriter
{
public:
    explicit ThreadedSink(std::unique_ptr<ImageWriter> sink);
    ~ThreadedSink() override;
    ThreadedSink(const ThreadedSink&) = delete;
    ThreadedSink& operator=(const ThreadedSink&) = delete;

    /// Takes a copy; waits while too many wait.
    void write(const cv::Mat& picture) override;
    void finish() override;

private:
    void run();
    bool take(cv::Mat& picture);
    void join();

    std::unique_ptr<ImageWriter> m_pSink;
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    std::deque<cv::Mat> m_oWaiting;
    std::vector<cv::Mat> m_vecUsed; ///< whose memory is there again
    bool m_bEnded = false;          ///< no more pictures come
    std::exception_ptr m_pError;
    std::thread m_oThread; ///< last: it uses the others
};

} // namespace velmo::recordings
