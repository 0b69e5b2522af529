#pragma once

#include "bench/Bench.h"

#include <map>
#include <string>
#include <vector>

/// Nanoseconds of one run of each form.
using Times = std::map<std::string, double>;

/// The level whose clones the loops run in, or that they were built for: "x86-64-v3", "aarch64" or the like.
std::string processorLevel();

/// What a job came to on one size.
class Result
{
public:
    Result(std::string job, std::string size, const Job& definition, Times times);

    const std::string& job() const { return m_strJob; }
    const std::string& size() const { return m_strSize; }
    const std::string& item() const { return m_strItem; }
    /// The forms in the order in which the job has them.
    const std::vector<std::string>& forms() const { return m_aForms; }

    double nanosecondsPerItem(const std::string& form = "ours") const;
    /// How many times as fast as a form we are.
    double faster(const std::string& form) const { return m_mapTimes.at(form) / m_mapTimes.at("ours"); }

    struct Bar
    {
        std::string text;
        bool bCounts; ///< on this level
        bool bMet;
    };
    const std::vector<Bar>& bars() const { return m_aBars; }
    bool meetsBars() const;

private:
    Bar judged(const Job::Bar& bar) const;

    std::string m_strJob, m_strSize, m_strItem;
    double m_dItems;
    Times m_mapTimes;
    std::vector<std::string> m_aForms;
    std::vector<Bar> m_aBars;
};

void printTable(const std::vector<Result>& results);
void printJson(const std::vector<Result>& results);

/// Replaces what stands between the marks <!-- speed --> and <!-- /speed --> of a page by a table of the
/// results whose rows the page is about.
/// @throws std::runtime_error  if the page has no such marks, or a row was not measured
void writePage(const std::string& path, const std::vector<Result>& results);
