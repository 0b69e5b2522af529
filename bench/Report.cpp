#include "bench/Report.h"

#include "core/Clones.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

std::string format(const char* pattern, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

std::string asTimes(double value)
{
    return format(value < 9.95 ? "%.1f" : "%.0f", value);
}

bool isPeer(const std::string& form)
{
    return form != "ours" && form != "plain" && form != "memcpy";
}

/// A row of the page's table: a job at one size, its title, and what to say of its peers.
struct Row
{
    const char* job;
    const char* size;
    const char* title;
    std::vector<std::pair<const char*, const char*>> peers; ///< form, what it is
};

const std::vector<Row>& rows()
{
    static const std::vector<Row> all = {
        {"temporal any parameters",
         "640x480",
         "temporal noise",
         {{"addWeighted", "`addWeighted`, which has a fixed weight and no test for motion"}}},
        {"static pattern", "640x480", "static pattern", {}},
        {"spatial",
         "640x480",
         "spatial noise",
         {{"bilateralFilter", "`bilateralFilter`"},
          {"GaussianBlur", "`GaussianBlur` 3 x 3, which spares no edge"}}},
        {"downsize 2/3", "240x180", "downsizing to 2/3", {{"INTER_LINEAR", "`resize`"}}},
        {"downsize 1/2", "240x180", "downsizing to 1/2", {{"INTER_LINEAR", "`resize`"}}},
        {"palettise",
         "640x480",
         "palettise",
         {{"scale+applyColorMap", "`convertScaleAbs` and `applyColorMap`"}}},
        {"palette table rebuild",
         "4096x1",
         "table for a new range of 4,096",
         {{"resize alone", "`resize` alone"}}},
        {"pipeline",
         "640x480",
         "static pattern, temporal, spatial, palettise in a chain",
         {{"OpenCV chain", "the simplest OpenCV chain"}, {"bilateral chain", "one with `bilateralFilter`"}}},
        {"UYVY to BGR", "640x480", "UYVY to BGR", {{"cvtColor", "`cvtColor`"}}},
        {"YCbCr to BGR", "640x480", "YCbCr to BGR", {{"cvtColor", "`cvtColor`"}}},
        {"BGR to YCbCr", "640x480", "BGR to YCbCr", {{"cvtColor", "`cvtColor`"}}},
        {"bad pixels by spread",
         "640x480",
         "bad pixels by spread",
         {{"calcHist+inRange", "`calcHist` and `inRange`"}}},
        {"replacement pixels, 1 %", "640x480", "replacements of bad pixels, 1 % bad", {}},
        {"blob bounding box", "400x250", "blob: bounding box", {{"boundingRect", "`boundingRect`"}}},
        {"blob centre", "400x250", "blob: centre", {{"moments", "`moments`"}}},
    };
    return all;
}

const Result& find(const std::vector<Result>& results, const Row& row)
{
    for (const Result& result : results)
        if (result.job() == row.job && result.size() == row.size)
            return result;
    throw std::runtime_error(std::string("not measured: ") + row.job + " " + row.size);
}

std::string markdown(const std::vector<Result>& results)
{
    std::ostringstream out;
    out << "Loops of level " << processorLevel()
        << ", one thread against one, processor time of one run of `./dev bench`.\n"
        << "How many times as fast we are as\n\n| job | our plain form | what a user would pick instead "
           "|\n|---|---|---|\n";
    for (const Row& row : rows()) {
        const Result& result = find(results, row);
        std::string peers;
        for (const auto& [form, what] : row.peers)
            peers += (peers.empty() ? "" : ", ") + asTimes(result.times(form)) + " " + what;
        out << "| " << row.title << " | " << asTimes(result.times("plain")) << " | "
            << (peers.empty() ? "nothing to compare with" : peers) << " |\n";
    }
    return out.str();
}

} // namespace

std::string processorLevel()
{
#if VELMO_HAS_CLONES
    __builtin_cpu_init();
    return __builtin_cpu_supports("x86-64-v4") != 0   ? "x86-64-v4"
           : __builtin_cpu_supports("x86-64-v3") != 0 ? "x86-64-v3"
           : __builtin_cpu_supports("x86-64-v2") != 0 ? "x86-64-v2"
                                                      : "x86-64";
#elif defined(__AVX512BW__)
    return "x86-64-v4";
#elif defined(__AVX2__)
    return "x86-64-v3";
#elif defined(__SSE4_2__)
    return "x86-64-v2";
#elif defined(__x86_64__)
    return "x86-64";
#elif defined(__aarch64__)
    return "aarch64";
#else
    return "another processor";
#endif
}

Result::Result(std::string job, std::string size, const Job& definition, Measure measure, Costs costs)
    : m_strJob(std::move(job)), m_strSize(std::move(size)), m_strItem(definition.item()),
      m_dItems(static_cast<double>(definition.items())), m_eMeasure(measure), m_mapCosts(std::move(costs))
{
    for (const Job::Form& form : definition.forms())
        m_aForms.push_back(form.name);
    if (measure == Measure::time)
        for (const Job::Bar& bar : definition.bars())
            m_aBars.push_back(judged(bar));
    else if (definition.instructions())
        m_aBars.push_back({"<= " + format("%g", *definition.instructions()) + " + 5 %",
                           processorLevel() == "aarch64", perItem() <= 1.05 * *definition.instructions()});
}

double Result::perItem(const std::string& form) const
{
    return m_mapCosts.at(form) / m_dItems;
}

Result::Bar Result::judged(const Job::Bar& bar) const
{
    const double fast = times(bar.form);
    const bool counts = bar.level.empty() || processorLevel() >= bar.level;
    return {bar.form + (bar.bSpeedup ? " >= " : " <= ") + format("%g", bar.factor) +
                (bar.level.empty() ? "" : " (" + bar.level + ")"),
            counts, bar.bSpeedup ? fast >= bar.factor : 1 / fast <= bar.factor};
}

bool Result::meetsBars() const
{
    return std::all_of(m_aBars.begin(), m_aBars.end(),
                       [](const Bar& bar) { return bar.bMet || !bar.bCounts; });
}

namespace {

std::string barsOf(const Result& result)
{
    std::string text;
    for (const Result::Bar& bar : result.bars())
        text += (text.empty() ? "" : ", ") + bar.text + (bar.bMet ? " met" : bar.bCounts ? " MISSED" : " -");
    return text;
}

} // namespace

void printTable(const std::vector<Result>& results)
{
    std::printf(
        "%s; how many times as fast as the plain form and the peers; memcpy: how many times its time\n\n",
        processorLevel().c_str());
    const char* pattern = "%-30s %-10s %13s %8s %8s  %-48s %s\n";
    std::printf(pattern, "job", "size", "ours", "x plain", "memcpy", "x peers", "bars");
    for (const Result& result : results) {
        std::string plain = "-", peers;
        for (const std::string& form : result.forms()) {
            if (form == "plain")
                plain = format("%.2f", result.times(form));
            if (isPeer(form))
                peers += (peers.empty() ? "" : ", ") + format("%.2f ", result.times(form)) + form;
        }
        const std::string cost = format("%.3g ns/", result.perItem()) + result.item();
        std::printf(pattern, result.job().c_str(), result.size().c_str(), cost.c_str(), plain.c_str(),
                    format("%.2f", 1 / result.times("memcpy")).c_str(), peers.c_str(),
                    barsOf(result).c_str());
    }
}

void printCounts(const std::vector<Result>& results)
{
    std::printf("%s; instructions executed\n\n", processorLevel().c_str());
    const char* pattern = "%-30s %-10s %-8s %8s %8s  %-56s %s\n";
    std::printf(pattern, "job", "size", "for a", "ours", "plain", "peers", "bar");
    for (const Result& result : results) {
        std::string plain = "-", peers;
        for (const std::string& form : result.forms()) {
            const std::string cost = format("%.3g", result.perItem(form));
            if (form == "plain")
                plain = cost;
            if (isPeer(form))
                peers += (peers.empty() ? "" : ", ") + cost + " " + form;
        }
        std::printf(pattern, result.job().c_str(), result.size().c_str(), result.item().c_str(),
                    format("%.3g", result.perItem()).c_str(), plain.c_str(), peers.c_str(),
                    barsOf(result).c_str());
    }
}

void printJson(const std::vector<Result>& results)
{
    cv::FileStorage out(".json",
                        cv::FileStorage::WRITE | cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_JSON);
    out << "level" << processorLevel() << "results"
        << "[";
    for (const Result& result : results) {
        out << "{"
            << "job" << result.job() << "size" << result.size() << "item" << result.item()
            << (result.measure() == Measure::time ? "nanoseconds" : "instructions") << "[";
        for (const std::string& form : result.forms())
            out << "{"
                << "form" << form << "perItem" << result.perItem(form) << "}";
        out << "]"
            << "bars"
            << "[";
        for (const Result::Bar& bar : result.bars())
            out << "{"
                << "bar" << bar.text << "counts" << bar.bCounts << "met" << bar.bMet << "}";
        out << "]"
            << "}";
    }
    out << "]";
    std::printf("%s", out.releaseAndGetString().c_str());
}

void writePage(const std::string& path, const std::vector<Result>& results)
{
    std::ifstream in(path);
    std::string page{std::istreambuf_iterator<char>(in), {}};
    const std::string begin = "<!-- speed -->\n", end = "<!-- /speed -->";
    const std::size_t from = page.find(begin), to = page.find(end);
    if (from == std::string::npos || to == std::string::npos || to < from)
        throw std::runtime_error(path + " has no place for the table: no <!-- speed --> line before a " +
                                 end);
    page.replace(from + begin.size(), to - from - begin.size(), markdown(results));
    std::ofstream(path) << page;
}
