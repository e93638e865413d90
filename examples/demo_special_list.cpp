// zeMath demo, special functions: the table's categories listed through the string
// array class, as a C++ host would.
#include <cstdio>

#include "zemath.h"
#include "zemath/string_array.hpp"

extern "C" void demo_special_categories(void);

extern "C" void demo_special_categories(void) {
    const struct {
        int code;
        const char* what;
    } categories[] = {
        {0, "special"}, {1, "cumulative"}, {2, "density"}, {3, "inverse"}, {5, "angle"}};
    for (const auto& c : categories) {
        CStringArray names, arguments, labels;
        const int n = zemath_KS_functions_get_list(&names, &arguments, c.code, &labels);
        std::printf("category %d (%s): %d rows, first %s(%s)%s%s\n", c.code, c.what, n,
                    names.GetAt(0), arguments.GetAt(0), *labels.GetAt(0) ? " label " : "",
                    labels.GetAt(0));
    }
}
