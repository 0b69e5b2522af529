#include "bench/Bench.h"

#include <CLI/CLI.hpp>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
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
    m_aBars.push_back({std::move(form), factor, false});
    return *this;
}

Job& Job::atLeast(double factor, std::string form)
{
    m_aBars.push_back({std::move(form), factor, true});
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

/// Keeps the fastest repetition of each form: what disturbs a run only ever makes it slower.
class FastestReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            // Runs timed by hand know no processor time.
            const double time =
                run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
            const auto [place, first] = nanoseconds.emplace(run.run_name.function_name, time);
            place->second = std::min(place->second, time);
        }
    }

    std::map<std::string, double> nanoseconds;
};

std::string format(const char* pattern, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

std::string sizeText(cv::Size size)
{
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

/// One line of the table at the end.
struct Line
{
    std::string job, size, cost, plain, copy, peers, bars;
};

Line compare(const std::string& name, cv::Size size, const Job& job, std::map<std::string, double>& times)
{
    const double ours = times["ours"];
    Line line{name,
              sizeText(size),
              format("%.3g ns/", ours / static_cast<double>(job.items())) + job.item(),
              "-",
              "-",
              "",
              ""};
    for (const Job::Form& form : job.forms()) {
        const double faster = times[form.name] / ours;
        if (form.name == "plain")
            line.plain = format("%.2f", faster);
        else if (form.name == "memcpy")
            line.copy = format("%.2f", 1 / faster);
        else if (form.name != "ours")
            line.peers += (line.peers.empty() ? "" : ", ") + format("%.2f ", faster) + form.name;
    }
    for (const Job::Bar& bar : job.bars()) {
        const double faster = times[bar.form] / ours;
        const bool met = bar.bSpeedup ? faster >= bar.factor : 1 / faster <= bar.factor;
        line.bars += (line.bars.empty() ? "" : ", ") + bar.form + (bar.bSpeedup ? " >= " : " <= ") +
                     format("%g", bar.factor) + (met ? " met" : " MISSED");
    }
    return line;
}

void print(const std::vector<Line>& lines)
{
    std::printf(
        "\nhow many times as fast as the plain form and the peers; memcpy: how many times its time\n\n");
    std::printf("%-26s %-10s %13s %8s %8s  %-48s %s\n", "job", "size", "ours", "x plain", "memcpy", "x peers",
                "bars");
    for (const Line& line : lines)
        std::printf("%-26s %-10s %13s %8s %8s  %-48s %s\n", line.job.c_str(), line.size.c_str(),
                    line.cost.c_str(), line.plain.c_str(), line.copy.c_str(), line.peers.c_str(),
                    line.bars.c_str());
}

void runPrepared(benchmark::State& state, const Job::Form& form)
{
    for (auto _ : state) {
        form.prepare();
        const auto start = std::chrono::steady_clock::now();
        form.run();
        benchmark::ClobberMemory();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}

/// Times the forms of one job against each other, interleaved.
std::map<std::string, double> measure(const Job& job)
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
    FastestReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.nanoseconds;
}

} // namespace

Registration::Registration(std::string name, std::function<Job(cv::Size)> make, std::vector<cv::Size> sizes)
{
    entries().push_back({std::move(name), std::move(make), std::move(sizes)});
}

int main(int argc, char** argv)
{
    CLI::App app("Our kernels beside their plain forms, their peers and a memcpy of the same bytes.");
    std::string jobs = ".*", only;
    int rounds = 9;
    bool quick = false;
    app.add_option("--job", jobs, "only jobs whose name matches this expression");
    app.add_option("--size", only, "only this size, such as 640x480");
    app.add_option("--rounds", rounds, "interleaved rounds, of which the fastest counts")
        ->check(CLI::Range(1, 1000));
    app.add_flag("--quick", quick, "one iteration of everything: does it run, do the forms agree");
    CLI11_PARSE(app, argc, argv);

    std::string arguments[] = {"imgproc_bench", "--benchmark_enable_random_interleaving=true",
                               "--benchmark_repetitions=" + std::to_string(quick ? 1 : rounds),
                               std::string("--benchmark_min_time=") + (quick ? "0" : "0.02")};
    char* pointers[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data()};
    int count = 4;
    benchmark::Initialize(&count, pointers);
    cv::setNumThreads(1); // one thread against one

    std::sort(entries().begin(), entries().end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    std::vector<Line> lines;
    bool agree = true;
    for (const Entry& entry : entries()) {
        if (!std::regex_search(entry.name, std::regex(jobs)))
            continue;
        for (const cv::Size size : entry.sizes) {
            if (!only.empty() && only != sizeText(size))
                continue;
            std::fprintf(stderr, "%s %s\n", entry.name.c_str(), sizeText(size).c_str());
            const Job job = entry.make(size);
            if (!job.agrees()) {
                std::printf("%s %s: the forms do not agree, not timed\n", entry.name.c_str(),
                            sizeText(size).c_str());
                agree = false;
                continue;
            }
            std::map<std::string, double> times = measure(job);
            lines.push_back(compare(entry.name, size, job, times));
        }
    }
    print(lines);
    return agree && !lines.empty() ? 0 : 1;
}
