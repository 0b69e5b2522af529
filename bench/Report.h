#pragma once

#include "bench/Bench.h"

#include <map>
#include <string>
#include <vector>

/// What one run of each form costs: nanoseconds or instructions.
using Costs = std::map<std::string, double>;

enum class Measure
{
    time,
    instructions
};

/// The level whose clones the loops run in, or that they were built for: "x86-64-v3", "aarch64" or the like.
std::string processorLevel();

/// What a job came to on one size.
class Result
{
public:
    Result(std::string job, std::string size, const Job& definition, Measure measure, Costs costs);

    const std::string& job() const { return m_strJob; }
    const std::string& size() const { return m_strSize; }
    const std::string& item() const { return m_strItem; }
    /// The forms in the order in which the job has them.
    const std::vector<std::string>& forms() const { return m_aForms; }

    Measure measure() const { return m_eMeasure; }
    double perItem(const std::string& form = "ours") const;
    /// How many times as much as ours a form costs.
    double times(const std::string& form) const { return m_mapCosts.at(form) / m_mapCosts.at("ours"); }

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
    Measure m_eMeasure;
    Costs m_mapCosts;
    std::vector<std::string> m_aForms;
    std::vector<Bar> m_aBars;
};

void printTable(const std::vector<Result>& results);
void printCounts(const std::vector<Result>& results);
void printJson(const std::vector<Result>& results);

/// Replaces what stands between the marks <!-- speed --> and <!-- /speed --> of a page by a table of the
/// results whose rows the page is about.
/// @throws std::runtime_error  if the page has no such marks, or a row was not measured
void writePage(const std::string& path, const std::vector<Result>& results);
