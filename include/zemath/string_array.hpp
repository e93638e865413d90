// zeMath: the growable array of strings through which zemath_KS_functions_get_list
// returns the script function list (function_table.h). A C++ class: hosts written in C++
// construct it, pass its address, and read the strings back.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "zemath/types.h"

class ZEMATH_API CStringArray {
  public:
    CStringArray() = default;

    // Number of strings held.
    std::size_t GetSize() const noexcept;
    // The string at index i (0-based); an empty string when i is out of range.
    const char* GetAt(std::size_t i) const noexcept;
    // Appends a copy of text (null reads as the empty string); returns its index.
    std::size_t Add(const char* text);
    // Removes every string.
    void RemoveAll() noexcept;

  private:
    std::vector<std::string> items_;
};
