#pragma once

#include "core/Forms.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A job done several ways on the same data: by us, by our plain form, by what a user would pick instead.
/// A memcpy that moves the same number of bytes is added to every job.
class Job
{
public:
    /// @param bytes  read and written by one run
    /// @param items  what a run handles: pixels, points, table entries
    /// @param item   the name of one of them
    Job(std::size_t bytes, std::size_t items, std::string item = "px");

    /// Both forms of a loop: `run` calls the one it is given. Where that is done in place, `prepare` brings
    /// fresh input before every run and is not timed.
    template <class Function, class Run>
    Job& loop(const velmo::exp::Forms<Function>& forms, Run run, const std::function<void()>& prepare = {})
    {
        ours([run, fast = forms.fast]() mutable { run(*fast); }).before(prepare);
        return plain([run, plain = forms.plain]() mutable { run(*plain); }).before(prepare);
    }

    Job& ours(std::function<void()> run);
    Job& plain(std::function<void()> run);
    Job& peer(std::string name, std::function<void()> run);
    /// Runs before every run of the form added last and is not timed.
    Job& before(std::function<void()> prepare);

    /// The forms must agree before they are timed; `agree` says whether this job's do.
    Job& check(bool agree);

    /// A bar: ours is to take at most `factor` times what `form` takes (a peer's name, "plain" or "memcpy").
    Job& atMost(double factor, std::string form);
    /// A bar: ours is to be at least `factor` times as fast as `form`.
    Job& atLeast(double factor, std::string form);
    /// The bar added last is only for loops built or chosen for this level, "x86-64-v3" or the like, or a
    /// better one.
    Job& from(std::string level);
    /// A bar for 64-bit ARM: ours is to execute at most a twentieth more instructions an item than the
    /// `count` of the day when the bar was set.
    Job& instructions(double count);

    struct Form
    {
        std::string name;
        std::function<void()> run;
        std::function<void()> prepare; ///< may be empty
    };
    struct Bar
    {
        std::string form;
        double factor;
        bool bSpeedup;     ///< at least this much faster; otherwise at most this much slower
        std::string level; ///< may be empty
    };

    const std::vector<Form>& forms() const { return m_aForms; }
    const std::vector<Bar>& bars() const { return m_aBars; }
    std::optional<double> instructions() const { return m_dInstructions; }
    bool agrees() const { return m_bAgrees; }
    std::size_t items() const { return m_u64Items; }
    const std::string& item() const { return m_strItem; }

private:
    std::vector<Form> m_aForms;
    std::vector<Bar> m_aBars;
    std::optional<double> m_dInstructions;
    bool m_bAgrees = true;
    std::size_t m_u64Items;
    std::string m_strItem;
};

/// The frame sizes that every job over frames runs on. Inline, so that it exists before the registrations of
/// every file do, whatever the order in which files are linked.
inline const std::vector<cv::Size> frameSizes = {{160, 120}, {240, 180}, {640, 480}, {1280, 1024}};

/// A variable of this type enters a job into the benchmark; `make` builds it for one size.
struct Registration
{
    Registration(std::string name, std::function<Job(cv::Size)> make,
                 std::vector<cv::Size> sizes = frameSizes);
};
