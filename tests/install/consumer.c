/* Links the installed library and makes one call; exits 0 when the sum skips NANUM. */
#include <zemath.h>

int main(void) {
    double d[] = {1.0, NANUM, 2.0};
    return zemath_d_sum(d, 3, 0, 0, 0, 0, 0) == 3.0 ? 0 : 1;
}
