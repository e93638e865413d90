// NRVec / NRMat: ownership, attachment, missing-value arithmetic, the permutation test,
// range min/max, the flat-copy resize, element pointers and the usual operations.
#include <gtest/gtest.h>

#include <vector>

#include "frame/nrmat.hpp"
#include "frame/nrvec.hpp"

using zemath::NRMat;
using zemath::NRVec;

TEST(NRVec, ConstructionValidityAndOutOfRangePointers) {
    NRVec<double> empty;
    EXPECT_FALSE(empty.is_valid());
    EXPECT_EQ(empty.at(0), nullptr);
    NRVec<double> none(0);
    EXPECT_FALSE(none.is_valid(true));
    NRVec<int> v(3, 7);
    EXPECT_TRUE(v.is_valid(true));
    EXPECT_EQ(v.count(7), 3);
    EXPECT_EQ(v.at(3), nullptr);
    EXPECT_EQ(v.at(-1), nullptr);
    EXPECT_EQ(*v.at(2), 7);
    NRVec<d_complex> z(2);  // complex elements are zero-filled
    EXPECT_EQ(z[1].re, 0.0);
    EXPECT_EQ(z[1].im, 0.0);
}

TEST(NRVec, AttachedBufferIsNeverFreed) {
    std::vector<double> buffer = {1.0, 2.0, 3.0};
    {
        NRVec<double> v(buffer.data(), 3);
        EXPECT_TRUE(v.attached());
        v[0] = 10.0;
    }  // destroying the vector leaves the caller's buffer untouched
    EXPECT_EQ(buffer, (std::vector<double>{10.0, 2.0, 3.0}));
    NRVec<double> copy;
    {
        NRVec<double> v(buffer.data(), 3);
        copy = v;  // a copy owns its own storage
    }
    EXPECT_FALSE(copy.attached());
    copy[1] = -1.0;
    EXPECT_EQ(buffer[1], 2.0);
}

TEST(NRVec, SubtractAndDividePropagateNanum) {
    NRVec<double> v(3);
    v[0] = 4.0, v[1] = NANUM, v[2] = -2.0;
    zemath::divide_scalar(v, 2.0);
    EXPECT_EQ(v[0], 2.0);
    EXPECT_EQ(v[1], NANUM);
    EXPECT_EQ(v[2], -1.0);
    zemath::subtract_scalar(v, 1.0);
    EXPECT_EQ(v[0], 1.0);
    EXPECT_EQ(v[1], NANUM);
    zemath::subtract_scalar(v, NANUM);
    EXPECT_EQ(v[0], NANUM);
    NRVec<double> w(2, 5.0);
    zemath::divide_scalar(w, 0.0);  // division by zero marks everything missing
    EXPECT_EQ(w[0], NANUM);
    EXPECT_EQ(w[1], NANUM);
}

TEST(NRVec, PermutationTest) {
    auto perm = [](std::vector<unsigned> values) {
        NRVec<unsigned> v(values.data(), static_cast<int>(values.size()));
        return zemath::is_permutation(v);
    };
    EXPECT_FALSE(perm({0, 2, 2}));
    EXPECT_FALSE(perm({0, 3, 1}));
    EXPECT_TRUE(perm({2, 0, 1}));
    EXPECT_FALSE(zemath::is_permutation(NRVec<unsigned>()));
}

TEST(NRVec, RangeMinMax) {
    std::vector<double> data = {5.0, NANUM, -1.0, 3.0, 9.0, -1.0};
    NRVec<double> v(data.data(), 6);
    double mn = 99, mx = 99;
    int imn = 99, imx = 99;
    const double marker = NANUM;
    EXPECT_EQ(zemath::range_min_max(v, &mn, &mx, &imn, &imx, 0, -1, &marker), 5);
    EXPECT_EQ(mn, -1.0);
    EXPECT_EQ(imn, 2);
    EXPECT_EQ(mx, 9.0);
    EXPECT_EQ(imx, 4);
    mn = mx = 99;
    EXPECT_EQ(zemath::range_min_max(v, &mn, &mx, &imn, &imx, 1, 1, &marker), 0);
    EXPECT_EQ(mn, 99);  // nothing usable: min and max not written
    EXPECT_EQ(imn, -1);
    EXPECT_EQ(zemath::range_min_max(v, &mn, &mx, &imn, &imx, 1, 1, nullptr), 1);  // no marker
    EXPECT_EQ(mn, NANUM);
    for (auto [first, last] : {std::pair{-1, 2}, {3, 2}, {0, 6}})
        EXPECT_EQ(zemath::range_min_max(v, &mn, &mx, nullptr, nullptr, first, last, &marker), -1);
}

TEST(NRVec, UsualOperations) {
    NRVec<int> v;
    v.append(1);
    v.append(3);
    EXPECT_TRUE(v.insert(1, 2));
    EXPECT_FALSE(v.insert(5, 0));
    EXPECT_EQ(std::vector<int>(v.begin(), v.end()), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(v.find(3), 2);
    EXPECT_EQ(v.find(4), -1);
    NRVec<int> part;
    EXPECT_TRUE(v.sub_vector(part, 1));
    EXPECT_EQ(std::vector<int>(part.begin(), part.end()), (std::vector<int>{2, 3}));
    EXPECT_EQ(zemath::dot(v, v), 14);
    EXPECT_TRUE(v.remove(0, 1));
    EXPECT_EQ(v.size(), 1);
    EXPECT_FALSE(v.remove(1, 1));
    EXPECT_TRUE(v.set_size(3));
    EXPECT_EQ(v[0], 3);  // kept on resize
}

TEST(NRVec, OrderTestRules) {
    auto ordered = [](std::vector<double> values, bool ascending, bool allow_equal) {
        NRVec<double> v(values.data(), static_cast<int>(values.size()));
        return v.is_ordered(ascending, allow_equal);
    };
    EXPECT_TRUE(ordered({1, 1, 2}, true, true));
    EXPECT_FALSE(ordered({1, 1, 2}, true, false));
    EXPECT_TRUE(ordered({3, 2, 1}, false, false));
    EXPECT_FALSE(ordered({3, 3, 1}, false, false));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(ordered({3, nan, 1}, true, false));  // a NaN pair never breaks the rule
    EXPECT_TRUE(ordered({5}, true, false));
    NRVec<double> w(3, 0.0);
    EXPECT_FALSE(w.is_ordered(true, true, 2, 1));
    EXPECT_FALSE(w.is_ordered(true, true, 0, 3));
}

TEST(NRMat, ElementPointersAndValidity) {
    NRMat<double> m(2, 3);
    EXPECT_TRUE(m.is_valid(true));
    EXPECT_EQ(m.ptr(2, 0), nullptr);
    EXPECT_EQ(m.ptr(0, 3), nullptr);
    EXPECT_EQ(m.ptr(-1, 0), nullptr);
    EXPECT_EQ(m.ptr(1, 2), m.ptr(0, 0) + 5);  // one contiguous row-major block
    EXPECT_FALSE(NRMat<int>().is_valid());
    NRMat<d_complex> z(2, 2);
    EXPECT_EQ(z[1][1].im, 0.0);
}

TEST(NRMat, ResizeIsAFlatCopy) {
    NRMat<double> m(2, 3);
    for (int k = 0; k < 6; ++k) m.ptr(0, 0)[k] = k + 1.0;
    ASSERT_TRUE(m.set_size(3, 2));
    EXPECT_EQ(m[0][0], 1.0);
    EXPECT_EQ(m[0][1], 2.0);
    EXPECT_EQ(m[1][0], 3.0);
    EXPECT_EQ(m[1][1], 4.0);  // kept values re-flow into the new rows
    EXPECT_FALSE(m.set_size(0, 2));
    EXPECT_EQ(m.rows(), 3);
}

TEST(NRMat, CopyAssignSubMatrixTransposeMultiply) {
    NRMat<double> a(2, 3, 0.0);
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j) a[i][j] = 10.0 * i + j;
    NRMat<double> b(a);
    b[0][0] = -1.0;
    EXPECT_EQ(a[0][0], 0.0);
    NRMat<double> c(5, 5);
    c = a;
    EXPECT_EQ(c.rows(), 2);
    EXPECT_EQ(c[1][2], 12.0);
    const NRMat<double> invalid;
    NRMat<double> d(1, 1, 4.0);
    d = invalid;
    EXPECT_EQ(d[0][0], 4.0);  // assigning an invalid source leaves the target unchanged
    const NRMat<double>& alias = d;
    d = alias;  // self-assignment does nothing
    EXPECT_EQ(d[0][0], 4.0);

    NRMat<double> part;
    ASSERT_TRUE(a.sub_matrix(part, 1, -1, 1, 1));
    EXPECT_EQ(part.rows(), 1);
    EXPECT_EQ(part.cols(), 2);
    EXPECT_EQ(part[0][1], 12.0);
    EXPECT_TRUE(a.sub_matrix(a, 0, 0, 0, -1));  // itself as the target
    EXPECT_EQ(a.cols(), 1);
    EXPECT_EQ(a[1][0], 10.0);
    EXPECT_FALSE(b.sub_matrix(part, 2, 1, 0, 0));

    NRMat<double> t = b.transposed();
    EXPECT_EQ(t.rows(), 3);
    EXPECT_EQ(t[2][1], 12.0);
    NRMat<double> p = zemath::multiply(b, t);  // 2x3 * 3x2
    EXPECT_EQ(p.rows(), 2);
    EXPECT_EQ(p[0][0], 1.0 + 1.0 + 4.0);
    EXPECT_FALSE(zemath::multiply(b, b).is_valid());
    NRMat<int> id(3, 3, 0);
    id.set_diagonal(1);
    EXPECT_EQ(id[2][2], 1);
    EXPECT_EQ(id[2][1], 0);
}

TEST(NRMat, AttachedBlockIsNotFreed) {
    std::vector<int> block = {1, 2, 3, 4};
    {
        NRMat<int> m(block.data(), 2, 2);
        EXPECT_EQ(m.ownership(), 1);
        m[1][0] = 30;
    }
    EXPECT_EQ(block[2], 30);
}
