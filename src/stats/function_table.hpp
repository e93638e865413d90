// The script function table: its row record, the 88 rows, the one-row table of
// context functions, and the dispatcher that calls a row from an array of doubles.
#pragma once

#include <span>

namespace zemath::stats {

using AnyFunction = void (*)();                 // the row's function, cast by signature
using ArgumentCheck = bool (*)(const double*);  // true when the arguments are accepted

struct FunctionRow {
    const char* name;
    AnyFunction function;
    int signature;
    int category;
    const char* arguments;
    int count;
    ArgumentCheck check;  // null in every row
    double rejected;      // the value returned when check refuses
    int flags;            // set: the row may not be called
    int reserved1;
    int reserved2;
    const char* label;
    int trailing;
};

std::span<const FunctionRow> function_rows() noexcept;
std::span<const FunctionRow> context_function_rows() noexcept;

// The row's function called with args (count word values) by its signature code.
double call_row(const FunctionRow& row, const double* args) noexcept;

// Row number of name, or -1.
long find_row(std::span<const FunctionRow> rows, const char* name) noexcept;

}  // namespace zemath::stats
