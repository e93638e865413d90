// The C boundary as a host sees it: the built libraries opened with dlopen, every
// function the public C headers declare found with dlsym, the companion library's plain
// names resolved locally without capturing the process's own math functions.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <cctype>
#include <set>
#include <sstream>
#include <string>

#include "zemath/types.h"

namespace {

// Removes comments and preprocessor lines (a small scanner; no std::regex, whose
// libstdc++ implementation trips GCC 12's uninitialised-use warning under sanitizers).
std::string strip_comments(const std::string& text) {
    std::string out;
    bool line_start = true;
    for (size_t i = 0; i < text.size();) {
        if (text.compare(i, 2, "/*") == 0) {
            const size_t close = text.find("*/", i + 2);
            i = close == std::string::npos ? text.size() : close + 2;
            out += ' ';
        } else if (text.compare(i, 2, "//") == 0 || (line_start && text[i] == '#')) {
            while (i < text.size() && text[i] != '\n') ++i;
        } else {
            if (text[i] == '\n')
                line_start = true;
            else if (!std::isspace(static_cast<unsigned char>(text[i])))
                line_start = false;
            out += text[i++];
        }
    }
    return out;
}

// Names of the C functions declared with ZEMATH_API in one header: the identifier right
// before the first '(' that follows the macro, unless a ';' or '{' comes first.
std::set<std::string> declared_in(const std::filesystem::path& header) {
    std::ifstream in(header);
    std::stringstream buffer;
    buffer << in.rdbuf();
    const std::string text = strip_comments(buffer.str());
    std::set<std::string> names;
    const std::string macro = "ZEMATH_API";
    for (size_t at = text.find(macro); at != std::string::npos; at = text.find(macro, at + 1)) {
        const size_t paren = text.find_first_of("(;{", at);
        if (paren == std::string::npos || text[paren] != '(') continue;
        size_t end = paren;
        while (end > at && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
        size_t begin = end;
        while (begin > at && (std::isalnum(static_cast<unsigned char>(text[begin - 1])) ||
                              text[begin - 1] == '_'))
            --begin;
        if (begin < end) names.insert(text.substr(begin, end - begin));
    }
    return names;
}

struct Library {
    explicit Library(const char* path) : handle(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}
    ~Library() {
        if (handle) dlclose(handle);
    }
    void* handle;
};

}  // namespace

TEST(Boundary, EveryDeclaredExportIsFound) {
    Library lib(ZEMATH_LIBRARY);
    ASSERT_NE(lib.handle, nullptr) << dlerror();
    int checked = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ZEMATH_INCLUDE_DIR "/zemath")) {
        if (entry.path().extension() != ".h" || entry.path().filename() == "plainnames.h") continue;
        for (const std::string& name : declared_in(entry.path())) {
            EXPECT_NE(dlsym(lib.handle, name.c_str()), nullptr) << name << " in " << entry.path();
            ++checked;
        }
    }
    EXPECT_GT(checked, 10);
}

TEST(Boundary, ExportsWorkThroughDlsym) {
    Library lib(ZEMATH_LIBRARY);
    ASSERT_NE(lib.handle, nullptr) << dlerror();
    using SumFn = double (*)(const double*, int, double*, double*, int*, int*, int*);
    auto sum = reinterpret_cast<SumFn>(dlsym(lib.handle, "zemath_d_sum"));
    ASSERT_NE(sum, nullptr);
    const double data[] = {2.0, NANUM, 5.0};
    int count = -7;
    EXPECT_EQ(sum(data, 3, nullptr, nullptr, nullptr, nullptr, &count), 7.0);
    EXPECT_EQ(count, 2);
    // The colliding math names are not defined by libzemath: whatever dlsym finds for
    // them comes from another object (the C library).
    Dl_info own{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(sum), &own), 0);
    for (const char* name : {"sin", "cos", "exp", "log", "cabs", "erf"}) {
        void* found = dlsym(lib.handle, name);
        Dl_info where{};
        if (found && dladdr(found, &where)) {
            EXPECT_NE(where.dli_fbase, own.dli_fbase) << name;
        }
    }
}

TEST(Boundary, PlainNamesStayLocalAndLeaveRealMathUntouched) {
    Library plain(ZEMATH_PLAIN_LIBRARY);
    ASSERT_NE(plain.handle, nullptr) << dlerror();
    int checked = 0;
    for (const std::string& name : declared_in(ZEMATH_INCLUDE_DIR "/zemath/plainnames.h")) {
        EXPECT_NE(dlsym(plain.handle, name.c_str()), nullptr) << name;
        ++checked;
    }
    EXPECT_GE(checked, 1);

    using CabsFn = double (*)(d_complex);
    auto zcabs = reinterpret_cast<CabsFn>(dlsym(plain.handle, "cabs"));
    ASSERT_NE(zcabs, nullptr);
    EXPECT_EQ(zcabs(d_complex{3.0, 4.0}), 5.0);
    EXPECT_EQ(zcabs(d_complex{NANUM, 1.0}), NANUM);

    // The plain names are the complex functions: sin(0 + i) = i sinh 1.
    using ComplexFn = d_complex (*)(d_complex);
    auto zsin = reinterpret_cast<ComplexFn>(dlsym(plain.handle, "sin"));
    ASSERT_NE(zsin, nullptr);
    const d_complex s = zsin(d_complex{0.0, 1.0});
    EXPECT_EQ(s.re, 0.0);
    EXPECT_NEAR(s.im, 1.1752011936438014, 1e-15);

    // The process's own math functions are not captured by the RTLD_LOCAL library.
    void* global_cabs = dlsym(RTLD_DEFAULT, "cabs");
    EXPECT_NE(global_cabs, reinterpret_cast<void*>(zcabs));
    using SinFn = double (*)(double);
    auto real_sin = reinterpret_cast<SinFn>(dlsym(RTLD_DEFAULT, "sin"));
    ASSERT_NE(real_sin, nullptr);
    volatile double x = 0.5;
    EXPECT_EQ(real_sin(x), std::sin(static_cast<double>(x)));
    EXPECT_NEAR(real_sin(x), 0.479425538604203, 1e-15);
}
