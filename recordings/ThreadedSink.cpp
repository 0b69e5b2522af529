#include "recordings/ThreadedSink.h"

#include <utility>

namespace velmo::recordings {
namespace {

constexpr std::size_t nMostWaiting = 3;

} // namespace

ThreadedSink::ThreadedSink(std::unique_ptr<ImageWriter> sink)
    : m_pSink(std::move(sink)), m_oThread([this] { run(); })
{}

ThreadedSink::~ThreadedSink()
{
    {
        const std::lock_guard lock(m_oMutex);
        m_oWaiting.clear(); // not finished: nobody will see them
    }
    join();
}

void ThreadedSink::write(const cv::Mat& picture)
{
    std::unique_lock lock(m_oMutex);
    m_oChanged.wait(lock, [this] { return m_pError || m_oWaiting.size() < nMostWaiting; });
    if (m_pError)
        std::rethrow_exception(m_pError);
    cv::Mat copy;
    if (!m_vecUsed.empty()) {
        copy = std::move(m_vecUsed.back());
        m_vecUsed.pop_back();
    }
    lock.unlock();
    picture.copyTo(copy);
    lock.lock();
    m_oWaiting.push_back(std::move(copy));
    m_oChanged.notify_all();
}

void ThreadedSink::finish()
{
    join();
    if (m_pError)
        std::rethrow_exception(m_pError);
    m_pSink->finish();
}

void ThreadedSink::run()
{
    try {
        for (cv::Mat picture; take(picture);)
            m_pSink->write(picture);
    } catch (...) {
        const std::lock_guard lock(m_oMutex);
        m_pError = std::current_exception();
        m_oChanged.notify_all();
    }
}

/// Gives the last picture back and waits for the next; false behind the last one.
bool ThreadedSink::take(cv::Mat& picture)
{
    std::unique_lock lock(m_oMutex);
    if (!picture.empty())
        m_vecUsed.push_back(std::move(picture));
    m_oChanged.wait(lock, [this] { return m_bEnded || !m_oWaiting.empty(); });
    if (m_oWaiting.empty())
        return false;
    picture = std::move(m_oWaiting.front());
    m_oWaiting.pop_front();
    m_oChanged.notify_all();
    return true;
}

void ThreadedSink::join()
{
    {
        const std::lock_guard lock(m_oMutex);
        m_bEnded = true;
        m_oChanged.notify_all();
    }
    if (m_oThread.joinable())
        m_oThread.join();
}

} // namespace velmo::recordings
