#pragma once

#include "apps/thermal/Options.h"

#include <iosfwd>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace thermal {

/// How a table is printed.
struct TableFormat
{
    bool json = false;
    bool csv = false;

    void addTo(const Command& command);
};

/// Rows of texts and numbers under headings; a table for people, or JSON or CSV for programs.
class Table
{
public:
    struct Column
    {
        std::string heading; ///< for people and CSV
        std::string key;     ///< for JSON
        int decimals = 0;    ///< of its numbers, for people
    };
    using Cell = std::variant<std::string, double>;

    explicit Table(std::vector<Column> columns) : m_vecColumns(std::move(columns)) {}

    /// As many cells as columns. A number that is NaN is one that does not exist: "-", null, empty. An
    /// infinite one lies outside what can be measured: "below", "above".
    void add(std::vector<Cell> row);

    void print(std::ostream& out, const TableFormat& format) const;

private:
    void printAligned(std::ostream& out) const;
    void printJson(std::ostream& out) const;
    void printCsv(std::ostream& out) const;
    std::string forPeople(std::size_t column, const Cell& cell) const;

    std::vector<Column> m_vecColumns;
    std::vector<std::vector<Cell>> m_vecRows;
};

/// A cell as it stands between commas.
std::string forCsv(const Table::Cell& cell);

/// Several tables of one command, each with its name for JSON.
using Tables = std::vector<std::pair<std::string, Table>>;

/// One below the other; as JSON they are one document: a single table's rows, or an object of the tables.
void printTables(std::ostream& out, const Tables& tables, const TableFormat& format);

} // namespace thermal
