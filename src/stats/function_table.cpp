// The script function table and its entry points: lookup by name, call by row number
// through the signature code, listing by category, and the context table whose one row
// integrates a host function.
#include "stats/function_table.hpp"

#include <utility>
#include <climits>
#include <cmath>
#include <cstring>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/d01.hpp"
#include "zemath/distributions.h"
#include "zemath/function_table.h"
#include "zemath/special.h"
#include "zemath/string_array.hpp"

namespace zemath::stats {

namespace {

template <class F>
AnyFunction any(F* f) {
    return reinterpret_cast<AnyFunction>(f);
}

#define ZEMATH_ROW(name, fn, sig, cat, args, count, label)                     \
    FunctionRow {                                                              \
        name, any(&fn), sig, cat, args, count, nullptr, 0.0, 0, 0, 0, label, 0 \
    }

const FunctionRow kRows[ZEMATH_KS_FUNCTION_COUNT] = {
    ZEMATH_ROW("airy_ai", airy_ai, 0, 0, "x", 1, "Airy"),
    ZEMATH_ROW("airy_ai_deriv", airy_ai_deriv, 0, 0, "x", 1, "Airy"),
    ZEMATH_ROW("airy_bi", airy_bi, 0, 0, "x", 1, "Airy"),
    ZEMATH_ROW("airy_bi_deriv", airy_bi_deriv, 0, 0, "x", 1, "Airy"),
    ZEMATH_ROW("angleint1", angleint1, 28, 5, "px1,py1,px2,py2", 6, "Trigonometric"),
    ZEMATH_ROW("angleint2", angleint2, 29, 5, "px1,py1,px2,py2,px3,py3,px4,py4", 10,
               "Trigonometric"),
    ZEMATH_ROW("bessel_i0", bessel_i0, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_i0_scaled", bessel_i0_scaled, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_i1", bessel_i1, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_i1_scaled", bessel_i1_scaled, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_i_nu", bessel_i_nu, 5, 0, "x,nu", 2, "Bessel"),
    ZEMATH_ROW("bessel_i_nu_scaled", bessel_i_nu_scaled, 5, 0, "x,nu", 2, "Bessel"),
    ZEMATH_ROW("bessel_j0", bessel_j0, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_j1", bessel_j1, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_k0", bessel_k0, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_k0_scaled", bessel_k0_scaled, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_k1", bessel_k1, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_k1_scaled", bessel_k1_scaled, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_k_nu", bessel_k_nu, 5, 0, "x,nu", 2, "Bessel"),
    ZEMATH_ROW("bessel_k_nu_scaled", bessel_k_nu_scaled, 5, 0, "x,nu", 2, "Bessel"),
    ZEMATH_ROW("bessel_y0", bessel_y0, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("bessel_y1", bessel_y1, 0, 0, "x", 1, "Bessel"),
    ZEMATH_ROW("betacdf", betacdf, 19, 1, "x,a,b", 5, ""),
    ZEMATH_ROW("betainv", betainv, 11, 3, "p,a,b", 4, ""),
    ZEMATH_ROW("betapdf", betapdf, 11, 2, "x,a,b", 4, ""),
    ZEMATH_ROW("binocdf", binocdf, 20, 1, "k,n,p", 5, ""),
    ZEMATH_ROW("binopdf", binopdf, 27, 2, "x,nt,p", 4, ""),
    ZEMATH_ROW("bivarnormcdf", bivarnormcdf, 11, 1, "x,y,corre", 4, ""),
    ZEMATH_ROW("cauchypdf", cauchypdf, 11, 2, "x,a,b", 4, ""),
    ZEMATH_ROW("chi2cdf", chi2cdf, 13, 1, "x,df", 4, ""),
    ZEMATH_ROW("chi2inv", chi2inv, 10, 3, "p,df", 3, ""),
    ZEMATH_ROW("cos_integral", cos_integral, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("cumul_normal", cumul_normal, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("cumul_normal_complem", cumul_normal_complem, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("degrees", degrees, 0, 5, "angle", 1, "Trigonometric"),
    ZEMATH_ROW("elliptic_integral_rc", elliptic_integral_rc, 1, 0, "x,y", 2, "Integral"),
    ZEMATH_ROW("elliptic_integral_rd", elliptic_integral_rd, 2, 0, "x,y,z", 3, "Integral"),
    ZEMATH_ROW("elliptic_integral_rf", elliptic_integral_rf, 2, 0, "x,y,z", 3, "Integral"),
    ZEMATH_ROW("elliptic_integral_rj", elliptic_integral_rj, 3, 0, "x,y,z,r", 4, "Integral"),
    ZEMATH_ROW("erf", erfz, 0, 0, "x", 1, "Error"),
    ZEMATH_ROW("erfc", erfcz, 0, 0, "x", 1, "Error"),
    ZEMATH_ROW("erfcinv", erfcinv, 0, 0, "dy", 1, "Error"),
    ZEMATH_ROW("erfcx", erfcx, 0, 0, "x", 1, "Error"),
    ZEMATH_ROW("erfinv", erfinv, 0, 0, "dy", 1, "Error"),
    ZEMATH_ROW("exp_integral", exp_integral, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("exppdf", exppdf, 10, 2, "x,mu", 3, ""),
    ZEMATH_ROW("fcdf", fcdf, 19, 1, "f,ndf,fdf", 5, ""),
    ZEMATH_ROW("finv", finv, 11, 3, "p,df1,df2", 5, ""),
    ZEMATH_ROW("fresnel_c", fresnel_c, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("fresnel_s", fresnel_s, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("gamcdf", gamcdf, 19, 1, "g,a,b", 5, ""),
    ZEMATH_ROW("gaminv", gaminv, 11, 3, "p,a,b", 4, ""),
    ZEMATH_ROW("gamma", gammaz, 0, 0, "x", 1, "Gamma"),
    ZEMATH_ROW("gampdf", gampdf, 11, 2, "x,a,b", 4, ""),
    ZEMATH_ROW("hygecdf", hygecdf, 23, 1, "k,m,n,l", 6, ""),
    ZEMATH_ROW("incomplete_gamma", incomplete_gamma, 1, 0, "a,x", 2, "Gamma"),
    ZEMATH_ROW("jacobian_theta", jacobian_theta, 6, 0, "k,x,q", 3, "Miscellaneous"),
    ZEMATH_ROW("kelvin_bei", kelvin_bei, 0, 0, "x", 1, "Kelvin"),
    ZEMATH_ROW("kelvin_ber", kelvin_ber, 0, 0, "x", 1, "Kelvin"),
    ZEMATH_ROW("kelvin_kei", kelvin_kei, 0, 0, "x", 1, "Kelvin"),
    ZEMATH_ROW("kelvin_ker", kelvin_ker, 0, 0, "x", 1, "Kelvin"),
    ZEMATH_ROW("ks2density", ks2density, 4, 2, "x,y,vx,vy,wx,wy", 6, ""),
    ZEMATH_ROW("ksdensity", ksdensity, 27, 2, "x,vx,w", 4, ""),
    ZEMATH_ROW("lambertW", lambertW, 25, 0, "x,branch,offset", 4, "Miscellaneous"),
    ZEMATH_ROW("lappdf", lappdf, 11, 2, "x,mu,b", 4, ""),
    ZEMATH_ROW("log_gamma", log_gamma, 0, 0, "x", 1, "Gamma"),
    ZEMATH_ROW("logncdf", logncdf, 19, 1, "x,mu,sigma", 5, ""),
    ZEMATH_ROW("logninv", logninv, 11, 3, "p,mu,sigma", 4, ""),
    ZEMATH_ROW("lognpdf", lognpdf, 11, 2, "x,mu,sigma", 4, ""),
    ZEMATH_ROW("ncbetacdf", ncbetacdf, 17, 1, "x,a,b,lambda", 5, ""),
    ZEMATH_ROW("ncchi2cdf", ncchi2cdf, 11, 1, "x,f,lambda", 4, ""),
    ZEMATH_ROW("ncfcdf", ncfcdf, 17, 1, "f,df1,df2,lambda", 5, ""),
    ZEMATH_ROW("nctcdf", nctcdf, 26, 1, "t,df,delta,maxiter", 5, ""),
    ZEMATH_ROW("normcdf", normcdf, 9, 1, "x", 3, ""),
    ZEMATH_ROW("norminv", norminv, 7, 3, "p", 2, ""),
    ZEMATH_ROW("normpdf", normpdf, 11, 2, "x,mu,sigma", 4, ""),
    ZEMATH_ROW("poisscdf", poisscdf, 16, 1, "k,lambda", 4, ""),
    ZEMATH_ROW("poisspdf", poisspdf, 24, 2, "x,lambda", 3, ""),
    ZEMATH_ROW("radians", radians, 0, 5, "angle", 1, "Trigonometric"),
    ZEMATH_ROW("real_polygamma", real_polygamma, 5, 0, "x,k", 2, "Gamma"),
    ZEMATH_ROW("sin_integral", sin_integral, 0, 0, "x", 1, "Integral"),
    ZEMATH_ROW("srangecdf", srangecdf, 12, 1, "q,v,group", 4, ""),
    ZEMATH_ROW("srangeinv", srangeinv, 12, 3, "p,v,ir", 4, ""),
    ZEMATH_ROW("tcdf", tcdf, 13, 1, "t,df", 4, ""),
    ZEMATH_ROW("tinv", tinv, 14, 3, "p,df", 4, ""),
    ZEMATH_ROW("wblcdf", wblcdf, 11, 1, "x,a,b", 4, ""),
    ZEMATH_ROW("wblinv", wblinv, 11, 3, "p,a,b", 4, ""),
    ZEMATH_ROW("wblpdf", wblpdf, 11, 2, "x,a,b", 4, ""),
};

// The context row's function takes the host context first.
double integral_row(void* context, double x1, double x2) noexcept {
    return integralKS(static_cast<KSFInfo*>(context), x1, x2);
}

const FunctionRow kContextRows[1] = {
    ZEMATH_ROW("integral", integral_row, 2, 0, "x1, x2", 2, "Integral"),
};

#undef ZEMATH_ROW

// An integer parameter: truncated toward zero, clamped to the int range.
int as_int(double v) {
    if (v >= 2147483647.0) return INT_MAX;
    if (v <= -2147483648.0) return INT_MIN;
    return static_cast<int>(v);
}

bool unusable_int(double v) {
    return std::isnan(v) || is_missing(v);
}

}  // namespace

std::span<const FunctionRow> function_rows() noexcept {
    return kRows;
}
std::span<const FunctionRow> context_function_rows() noexcept {
    return kContextRows;
}

long find_row(std::span<const FunctionRow> rows, const char* name) noexcept {
    if (name == nullptr) return -1;
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (std::strcmp(rows[i].name, name) == 0) return static_cast<long>(i);
    return -1;
}

double call_row(const FunctionRow& row, const double* a) noexcept {
    // The positions of the integer parameters of each signature, as a bit mask.
    unsigned int_mask = 0;
    switch (row.signature) {
        case 5:
            int_mask = 0b10;
            break;
        case 6:
            int_mask = 0b1;
            break;
        case 9:
            int_mask = 0b10;
            break;
        case 12:
        case 13:
        case 14:
            int_mask = 0b100;
            break;
        case 16:
            int_mask = 0b101;
            break;
        case 19:
            int_mask = 0b1000;
            break;
        case 20:
            int_mask = 0b1011;
            break;
        case 23:
            int_mask = 0b11111;
            break;
        case 24:
            int_mask = 0b1;
            break;
        case 25:
            int_mask = 0b110;
            break;
        case 26:
            int_mask = 0b1000;
            break;
        case 27:
            int_mask = 0b11;
            break;
        case 28:
            int_mask = 0b110000;
            break;
        case 29:
            int_mask = 0b1100000000;
            break;
        default:
            break;
    }
    for (int i = 0; i < 10; ++i)
        if (((int_mask >> i) & 1u) && unusable_int(a[i])) return NANUM;
    int st = 0;  // the discarded status
    const AnyFunction f = row.function;
    using D = double;
    switch (row.signature) {
        case 0:
            return reinterpret_cast<D (*)(D)>(f)(a[0]);
        case 1:
            return reinterpret_cast<D (*)(D, D)>(f)(a[0], a[1]);
        case 2:
            return reinterpret_cast<D (*)(D, D, D)>(f)(a[0], a[1], a[2]);
        case 3:
            return reinterpret_cast<D (*)(D, D, D, D)>(f)(a[0], a[1], a[2], a[3]);
        case 4:
            return reinterpret_cast<D (*)(D, D, D, D, D, D)>(f)(a[0], a[1], a[2], a[3], a[4], a[5]);
        case 5:
            return reinterpret_cast<D (*)(D, int)>(f)(a[0], as_int(a[1]));
        case 6:
            return reinterpret_cast<D (*)(int, D, D)>(f)(as_int(a[0]), a[1], a[2]);
        case 7:
            return reinterpret_cast<D (*)(D, int*)>(f)(a[0], &st);
        case 9:
            return reinterpret_cast<D (*)(D, int, int*)>(f)(a[0], as_int(a[1]), &st);
        case 10:
            return reinterpret_cast<D (*)(D, D, int*)>(f)(a[0], a[1], &st);
        case 11:
            return reinterpret_cast<D (*)(D, D, D, int*)>(f)(a[0], a[1], a[2], &st);
        case 12:
        case 13:
        case 14:
            return reinterpret_cast<D (*)(D, D, int, int*)>(f)(a[0], a[1], as_int(a[2]), &st);
        case 16:
            return reinterpret_cast<D (*)(int, D, int, int*)>(f)(as_int(a[0]), a[1], as_int(a[2]),
                                                                 &st);
        case 17:
            return reinterpret_cast<D (*)(D, D, D, D, int*)>(f)(a[0], a[1], a[2], a[3], &st);
        case 19:
            return reinterpret_cast<D (*)(D, D, D, int, int*)>(f)(a[0], a[1], a[2], as_int(a[3]),
                                                                  &st);
        case 20:
            return reinterpret_cast<D (*)(int, int, D, int, int*)>(f)(as_int(a[0]), as_int(a[1]),
                                                                      a[2], as_int(a[3]), &st);
        case 23:
            return reinterpret_cast<D (*)(int, int, int, int, int, int*)>(f)(
                as_int(a[0]), as_int(a[1]), as_int(a[2]), as_int(a[3]), as_int(a[4]), &st);
        case 24:
            return reinterpret_cast<D (*)(int, D, int*)>(f)(as_int(a[0]), a[1], &st);
        case 25:
            return reinterpret_cast<D (*)(D, int, int, int*)>(f)(a[0], as_int(a[1]), as_int(a[2]),
                                                                 &st);
        case 26:
            return reinterpret_cast<D (*)(D, D, D, int, int*)>(f)(a[0], a[1], a[2], as_int(a[3]),
                                                                  &st);
        case 27:
            return reinterpret_cast<D (*)(int, int, D, int*)>(f)(as_int(a[0]), as_int(a[1]), a[2],
                                                                 &st);
        case 28:
            return reinterpret_cast<D (*)(D, D, D, D, int, int)>(f)(a[0], a[1], a[2], a[3],
                                                                    as_int(a[4]), as_int(a[5]));
        case 29:
            return reinterpret_cast<D (*)(D, D, D, D, D, D, D, D, int, int)>(f)(
                a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], as_int(a[8]), as_int(a[9]));
        default:
            return NANUM;
    }
}

}  // namespace zemath::stats

// ---- CStringArray ---------------------------------------------------------------------

std::size_t CStringArray::GetSize() const noexcept {
    return items_.size();
}

const char* CStringArray::GetAt(std::size_t i) const noexcept {
    return i < items_.size() ? items_[i].c_str() : "";
}

std::size_t CStringArray::Add(const char* text) {
    items_.emplace_back(text != nullptr ? text : "");
    return items_.size() - 1;
}

void CStringArray::RemoveAll() noexcept {
    items_.clear();
}

// ---- exports ---------------------------------------------------------------------------

namespace {

using zemath::stats::FunctionRow;

constexpr int kModeFind = 1;
constexpr int kModeCall = 2;
constexpr int kLastMode = 4;

bool row_number(std::span<const FunctionRow> rows, const unsigned long* index) {
    return index != nullptr && *index < rows.size();
}

}  // namespace

extern "C" {

ZEMATH_API int zemath_KS_functions(unsigned mode, char* name, unsigned long* index, double* args,
                                   double* result) noexcept {
    const auto rows = zemath::stats::function_rows();
    if (mode < kModeFind || mode > kLastMode) return -1;
    if (mode == kModeFind) {
        const long row = zemath::stats::find_row(rows, name);
        if (row < 0) return -1;
        if (index != nullptr) *index = static_cast<unsigned long>(row);
        return rows[static_cast<std::size_t>(row)].count;
    }
    if (mode != kModeCall) return 0;  // modes 3 and 4: accepted, nothing to do
    if (!row_number(rows, index) || args == nullptr || result == nullptr) return -1;
    const FunctionRow& row = rows[*index];
    if (row.check != nullptr && !row.check(args)) {
        *result = row.rejected;
        return 0;
    }
    *result = zemath::stats::call_row(row, args);
    return 0;
}

ZEMATH_API int zemath_KS_base_functions(unsigned mode, char* name, unsigned long* index,
                                        void* context, double* args, double* result) noexcept {
    const auto rows = zemath::stats::context_function_rows();
    if (mode < kModeFind || mode > kLastMode) return -1;
    if (mode == kModeFind) {
        const long row = zemath::stats::find_row(rows, name);
        if (row < 0) return -1;
        if (index != nullptr) *index = static_cast<unsigned long>(row);
        return rows[static_cast<std::size_t>(row)].count;
    }
    if (mode != kModeCall) return 0;
    if (!row_number(rows, index) || args == nullptr || result == nullptr) return -1;
    const FunctionRow& row = rows[*index];
    if (row.flags != 0) return -1;
    using ContextFunction = double (*)(void*, double, double);
    *result = reinterpret_cast<ContextFunction>(row.function)(context, args[0], args[1]);
    return 0;
}

ZEMATH_API int zemath_KS_functions_get_list(CStringArray* names, CStringArray* argumentLists,
                                            int category, CStringArray* labels) noexcept {
    if (names == nullptr || argumentLists == nullptr) return -1;
    return zemath::guard_status([&] {
        // Built aside and moved in at the end, so that storage failing part way leaves the
        // caller's arrays as they were.
        CStringArray found_names, found_arguments;
        CStringArray found_labels = labels != nullptr ? *labels : CStringArray();  // appended to
        int appended = 0;
        for (const FunctionRow& row : zemath::stats::function_rows()) {
            if (row.category != category) continue;
            found_names.Add(row.name);
            found_arguments.Add(row.arguments);
            if (labels != nullptr) found_labels.Add(row.label);
            ++appended;
        }
        *names = std::move(found_names);
        *argumentLists = std::move(found_arguments);
        if (labels != nullptr) *labels = std::move(found_labels);
        return appended > 0 ? appended : -1;
    });
}

}  // extern "C"

// ---- integralKS ------------------------------------------------------------------------

namespace {

// The accuracy integralKS documents (zemath/function_table.h): max(1e-300, 1e-10 |integral|)
// in at most 500 subintervals.
constexpr double kRelativeAccuracy = 1e-10;
constexpr double kAbsoluteFloor = 1e-300;
constexpr int kSubintervals = 500;

double evaluate_host(double x, void* comm) {
    const KSFInfo* info = static_cast<const KSFInfo*>(comm);
    return info->function(info->context, x);
}

}  // namespace

extern "C" ZEMATH_API double integralKS(KSFInfo* f, double x1, double x2) noexcept {
    namespace nag = zemath::nag;
    if (f == nullptr || f->function == nullptr || std::isnan(x1) || std::isnan(x2)) return NANUM;
    const bool lower_infinite = zemath::is_missing(x1) || x1 == -HUGE_VAL;
    const bool upper_infinite = zemath::is_missing(x2) || x2 == HUGE_VAL;
    if (x1 == HUGE_VAL || x2 == -HUGE_VAL) return NANUM;
    return zemath::guard_value([&] {
        nag::NagError fail;
        double result = 0.0, abserr = 0.0;
        nag::Nag_QuadProgress qp;
        if (!lower_infinite && !upper_infinite) {
            nag::d01sjc(evaluate_host, x1, x2, kAbsoluteFloor, kRelativeAccuracy, kSubintervals,
                        &result, &abserr, &qp, f, &fail);
        } else {
            const auto kind = lower_infinite && upper_infinite
                                  ? nag::Nag_BoundInterval::Nag_Infinite
                              : lower_infinite ? nag::Nag_BoundInterval::Nag_LowerSemiInfinite
                                               : nag::Nag_BoundInterval::Nag_UpperSemiInfinite;
            nag::d01smc(evaluate_host, kind, lower_infinite ? x2 : x1, kAbsoluteFloor,
                        kRelativeAccuracy, kSubintervals, &result, &abserr, &qp, f, &fail);
        }
        if (fail.failed() || !std::isfinite(result)) return NANUM;
        return result;
    });
}
