// Affine transforms of the plane.

#ifndef SAMPLES_PROOF_CHECK_MATRIX_H
#define SAMPLES_PROOF_CHECK_MATRIX_H

namespace Proof {

/// x' = a x + c y + e, y' = b x + d y + f.
struct Matrix {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

    Matrix operator*(const Matrix& inner) const {
        return {a * inner.a + c * inner.b,     b * inner.a + d * inner.b,
                a * inner.c + c * inner.d,     b * inner.c + d * inner.d,
                a * inner.e + c * inner.f + e, b * inner.e + d * inner.f + f};
    }
    void apply(double& x, double& y) const {
        const double before = x;
        x = a * before + c * y + e;
        y = b * before + d * y + f;
    }
};

}  // namespace Proof

#endif
