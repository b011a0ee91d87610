// The fixed results of vectors, transforms and lines; nothing here follows the C library's trigonometry.
#include "include/korvale.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(Math, 3000, 0x16acbed6f2e97221u, 23)
{
    Draws random(1001);
    for (int i = 0; i < rounds; ++i) {
        double a[16], b[16], v[3], w[3], out[16];
        for (double* const matrix : {a, b})
            for (int k = 0; k < 16; ++k)
                matrix[k] = random.one_in(6) ? random.between(-1, 1) : random.uniform(-3, 3);
        for (int k = 0; k < 3; ++k) {
            v[k] = random.one_in(8) ? -0.0 : random.uniform(-2, 2);
            w[k] = random.one_in(8) ? v[k] : random.uniform(-2, 2);
        }
        Xfm m, n, product;
        array2xfm(a, m);
        array2xfm(b, n);
        MatrixMultiply(m, n, product);
        xfm2array(product, out);
        hash.add(out, 16);
        MatrixTranspose(product, m);
        hash.add(m[0], 16);
        TransformPoint(n, v, out);
        TransformVector(n, v, out + 3);
        xfm_pnt(a, w, out + 6);
        hash.add(out, 9).add(dot_product(v, w)).add(norm(v));
        cross_product(v, w, out);
        hash.add(out, 3).add(orientation_xfm(v, w, a, out)).add(out, 16);
        ScaleMatrix(v, n);
        TranslateMatrix(w, n);
        hash.add(n[0], 16);
        double line1[3], line2[3], x = 0, y = 0;
        hash.add(find_line(v, w, line1)).add(line1, 3).add(find_line(w, a, line2)).add(line2, 3);
        hash.add(find_intersect(line1, line2, out)).add(out, 2);
        double equations[2][3] = {{a[0], a[1], a[2]}, {a[3], a[4], a[5]}};
        hash.add(SolveTwoByTwo(equations, &x, &y)).add(x).add(y);
        hash.add(normalize(v)).add(v, 3).add(factorial(i % 15)).add(binomial(i % 40, i % 7)).add(power(a[0], i % 9));
        hash.add(bbox_intersect(a, b) ? 1 : 0);
    }
}

} // namespace korvale::test
