// Small vector and matrix functions. The size is the number of calls, each with a vector of its own: a result that is
// the next input, or lies where it did, makes a processor wait or not by chance.
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_EIGEN
#include <Eigen/Dense>
#endif
#ifdef KORVALE_HAS_GLM
#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>
#endif
#ifdef KORVALE_HAS_IMATH
#include <ImathMatrix.h>
#include <ImathVec.h>
#endif

namespace korvale::bench {
namespace {

struct Input {
    explicit Input(int count) : vectors(3 * static_cast<size_t>(count)), results(vectors.size())
    {
        Numbers random;
        for (double& value : vectors)
            value = random.uniform(-1, 1);
        for (double& value : a)
            value = random.uniform(-1, 1);
        for (double& value : b)
            value = random.uniform(-1, 1);
        array2xfm(a, m);
        array2xfm(b, n);
    }

    double a[16], b[16];
    Xfm m, n, out;
    std::vector<double> vectors, results;
    double *v, *w; // the vector of this call, and the place for its result
};

template <void (*run)(Input&)>
Work repeat(int times)
{
    return [input = std::make_shared<Input>(times), times] {
        for (int i = 0; i < times; ++i) {
            input->v = &input->vectors[3 * static_cast<size_t>(i)];
            input->w = &input->results[3 * static_cast<size_t>(i)];
            run(*input);
            keep(*input);
        }
    };
}

void multiply(Input& x)
{
    MatrixMultiply(x.m, x.n, x.out);
}
void transpose(Input& x)
{
    MatrixTranspose(x.m, x.out);
}
void unpack(Input& x)
{
    array2xfm(x.a, x.out);
}
void pack(Input& x)
{
    xfm2array(x.m, x.b);
}
void transform_point(Input& x)
{
    TransformPoint(x.m, x.v, x.w);
}
void cross(Input& x)
{
    cross_product(x.v, x.a, x.w);
}
void unit(Input& x)
{
    x.w[0] = x.v[0], x.w[1] = x.v[1], x.w[2] = x.v[2];
    keep(normalize(x.w));
}
void rotate(Input& x)
{
    rotation_matrix(x.v, x.out);
}
void compose(Input& x)
{
    SRT2Transform(x.a, x.v, x.b, x.out);
}

#ifdef KORVALE_HAS_EIGEN
void eigen_multiply(Input& x)
{
    using Matrix = Eigen::Map<Eigen::Matrix<double, 4, 4, Eigen::RowMajor>>;
    Matrix(x.out[0]).noalias() = Matrix(x.m[0]) * Matrix(x.n[0]);
}
#endif
#ifdef KORVALE_HAS_GLM
void glm_multiply(Input& x)
{
    const glm::dmat4 product = glm::make_mat4(x.m[0]) * glm::make_mat4(x.n[0]);
    keep(product);
}
void glm_unit(Input& x)
{
    const glm::dvec3 unit = glm::normalize(glm::make_vec3(x.v));
    x.w[0] = unit.x, x.w[1] = unit.y, x.w[2] = unit.z;
}
#endif
#ifdef KORVALE_HAS_IMATH
void imath_multiply(Input& x)
{
    const Imath::M44d product = Imath::M44d(x.m) * Imath::M44d(x.n);
    keep(product);
}
void imath_unit(Input& x)
{
    Imath::V3d v(x.v[0], x.v[1], x.v[2]);
    v.normalize();
    x.w[0] = v.x, x.w[1] = v.y, x.w[2] = v.z;
}
#endif

} // namespace

std::vector<Job> math_jobs()
{
    const std::vector<int> times = {1000};
    return {
        {"math.MatrixMultiply", times, repeat<multiply>},
        {"math.MatrixTranspose", times, repeat<transpose>},
        {"math.array2xfm", times, repeat<unpack>},
        {"math.xfm2array", times, repeat<pack>},
        {"math.TransformPoint", times, repeat<transform_point>},
        {"math.cross_product", times, repeat<cross>},
        {"math.normalize", times, repeat<unit>},
        {"math.rotation_matrix", times, repeat<rotate>},
        {"math.SRT2Transform", times, repeat<compose>},
#ifdef KORVALE_HAS_EIGEN
        {"math.MatrixMultiply@Eigen", times, repeat<eigen_multiply>},
#endif
#ifdef KORVALE_HAS_GLM
        {"math.MatrixMultiply@GLM", times, repeat<glm_multiply>},
        {"math.normalize@GLM", times, repeat<glm_unit>},
#endif
#ifdef KORVALE_HAS_IMATH
        {"math.MatrixMultiply@Imath", times, repeat<imath_multiply>},
        {"math.normalize@Imath", times, repeat<imath_unit>},
#endif
    };
}

} // namespace korvale::bench
