#include "bench/Bench.h"

#include "bench/Instructions.h"
#include "bench/Report.h"

#include <CLI/CLI.hpp>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <regex>

Job::Job(std::size_t bytes, std::size_t items, std::string item)
    : m_u64Items(items), m_strItem(std::move(item))
{
    // A copy of n bytes reads n and writes n.
    auto from = std::make_shared<std::vector<char>>(bytes / 2, 'a');
    auto to = std::make_shared<std::vector<char>>(bytes / 2, 'b');
    peer("memcpy", [from, to] { std::memcpy(to->data(), from->data(), from->size()); });
}

Job& Job::ours(std::function<void()> run)
{
    return peer("ours", std::move(run));
}

Job& Job::plain(std::function<void()> run)
{
    return peer("plain", std::move(run));
}

Job& Job::peer(std::string name, std::function<void()> run)
{
    m_aForms.push_back({std::move(name), std::move(run), {}});
    return *this;
}

Job& Job::before(std::function<void()> prepare)
{
    m_aForms.back().prepare = std::move(prepare);
    return *this;
}

Job& Job::check(bool agree)
{
    m_bAgrees = m_bAgrees && agree;
    return *this;
}

Job& Job::atMost(double factor, std::string form)
{
    m_aBars.push_back({std::move(form), factor, false, ""});
    return *this;
}

Job& Job::atLeast(double factor, std::string form)
{
    m_aBars.push_back({std::move(form), factor, true, ""});
    return *this;
}

Job& Job::from(std::string level)
{
    m_aBars.back().level = std::move(level);
    return *this;
}

Job& Job::instructions(double count)
{
    m_dInstructions = count;
    return *this;
}

namespace {

struct Entry
{
    std::string name;
    std::function<Job(cv::Size)> make;
    std::vector<cv::Size> sizes;
};

std::vector<Entry>& entries()
{
    static std::vector<Entry> all; // filled before main, by registrations in any order
    return all;
}

/// Of the repetitions of each form the time that a twentieth of them stays below: what disturbs a run only
/// ever makes it slower, and the very fastest is chance.
class QuantileReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration) // those timed by hand are in "real" time
                m_mapNanoseconds[run.run_name.function_name].push_back(
                    run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime());
    }

    Costs times()
    {
        Costs low;
        for (auto& [form, all] : m_mapNanoseconds) {
            std::sort(all.begin(), all.end());
            low[form] = all[all.size() / 20];
        }
        return low;
    }

private:
    std::map<std::string, std::vector<double>> m_mapNanoseconds;
};

/// What this thread has had of a processor so far. On a machine with other work a clock on the wall tells
/// little.
double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void runPrepared(benchmark::State& state, const Job::Form& form)
{
    for (auto _ : state) {
        form.prepare();
        const double start = threadSeconds();
        form.run();
        benchmark::ClobberMemory();
        state.SetIterationTime(threadSeconds() - start);
    }
}

/// Times the forms of one job against each other, interleaved.
Costs measure(const Job& job)
{
    benchmark::ClearRegisteredBenchmarks();
    for (const Job::Form& form : job.forms()) {
        if (form.prepare)
            benchmark::RegisterBenchmark(form.name.c_str(), runPrepared, form)->UseManualTime();
        else
            benchmark::RegisterBenchmark(form.name.c_str(), [&form](benchmark::State& state) {
                for (auto _ : state) {
                    form.run();
                    benchmark::ClobberMemory();
                }
            });
    }
    QuantileReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.times();
}

void initialize(int rounds, bool quick)
{
    std::string arguments[] = {"imgproc_bench", "--benchmark_enable_random_interleaving=true",
                               "--benchmark_repetitions=" + std::to_string(quick ? 1 : rounds),
                               std::string("--benchmark_min_time=") + (quick ? "0" : "0.004")};
    char* pointers[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data()};
    int count = 4;
    benchmark::Initialize(&count, pointers);
    cv::setNumThreads(1); // one thread against one
}

/// All of them, or what a job of so many sizes is counted on: the number for an item hardly depends on it.
std::vector<cv::Size> sizesToCount(const std::vector<cv::Size>& all)
{
    const cv::Size usual(640, 480);
    return std::count(all.begin(), all.end(), usual) != 0 ? std::vector<cv::Size>{usual} : all;
}

} // namespace

Registration::Registration(std::string name, std::function<Job(cv::Size)> make, std::vector<cv::Size> sizes)
{
    entries().push_back({std::move(name), std::move(make), std::move(sizes)});
}

int main(int argc, char** argv)
{
    CLI::App app("Our kernels beside their plain forms, their peers and a memcpy of the same bytes.");
    std::string jobs = ".*", only, page;
    int rounds = 40;
    bool quick = false, strict = false, json = false, count = false;
    app.add_option("--job", jobs, "only jobs whose name matches this expression");
    app.add_option("--size", only, "only this size, such as 640x480");
    app.add_option("--rounds", rounds, "interleaved rounds; of their times a low quantile counts")
        ->check(CLI::Range(1, 1000));
    app.add_flag("--count", count, "instructions instead of time, under qemu");
    app.add_flag("--quick", quick, "one iteration of everything: does it run, do the forms agree");
    app.add_flag("--strict", strict, "exit with 1 if a bar is missed")->excludes("--quick");
    app.add_flag("--json", json, "the results as JSON");
    app.add_option("--page", page, "writes the results into the speed table of this Markdown page")
        ->check(CLI::ExistingFile)
        ->excludes("--count");
    CLI11_PARSE(app, argc, argv);
    initialize(rounds, quick);

    std::sort(entries().begin(), entries().end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    std::vector<Result> results;
    bool agree = true;
    for (const Entry& entry : entries()) {
        if (!std::regex_search(entry.name, std::regex(jobs)))
            continue;
        for (const cv::Size size : count ? sizesToCount(entry.sizes) : entry.sizes) {
            const std::string sizeText = std::to_string(size.width) + "x" + std::to_string(size.height);
            if (!only.empty() && only != sizeText)
                continue;
            std::fprintf(stderr, "%s %s\n", entry.name.c_str(), sizeText.c_str());
            const Job job = entry.make(size);
            if (job.agrees()) {
                results.emplace_back(entry.name, sizeText, job, count ? Measure::instructions : Measure::time,
                                     count ? countInstructions(job) : measure(job));
                continue;
            }
            std::fprintf(stderr, "%s %s: the forms do not agree, not timed\n", entry.name.c_str(),
                         sizeText.c_str());
            agree = false;
        }
    }
    json ? printJson(results) : count ? printCounts(results) : printTable(results);
    if (!page.empty()) {
        try {
            writePage(page, results);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "imgproc_bench: %s\n", error.what());
            return 1;
        }
    }
    const bool met = !strict || std::all_of(results.begin(), results.end(), std::mem_fn(&Result::meetsBars));
    return agree && met && !results.empty() ? 0 : 1;
}
