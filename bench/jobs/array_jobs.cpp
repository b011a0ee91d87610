// Whole-array operations, frames, flattening and sampling.
#include <cmath>
#include <cstdlib>
#include <memory>

#include "bench/jobs/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_STEPS
#include "tests/reference/arrays.h"
#include "tests/reference/sampling.h"
#endif
#ifdef KORVALE_HAS_CGAL
#include <CGAL/Random.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/point_generators_3.h>
#endif
#ifdef KORVALE_HAS_EIGEN
#include <Eigen/Dense>
#endif

namespace korvale::bench {

template <class Array>
Around<Array>::Around(int width, std::vector<double> values) : numbers(std::move(values))
{
    if constexpr (requires(Array & a) { DataInitialize(&a); })
        DataInitialize(this);
    else
        DATAInitialize(this);
    this->dim = width;
    this->type = DATA_TYPE_DOUBLE;
    this->count = static_cast<int32_t>(numbers.size()) / width;
    this->dvals = numbers.data();
}

template struct Around<Data>;
template struct Around<DATAstruct>;

namespace {

std::vector<double> some(int count)
{
    Numbers random;
    std::vector<double> values(static_cast<size_t>(count));
    for (double& value : values)
        value = random.uniform(-5, 5);
    return values;
}

/// Input arrays of n points, and an output that is used again.
struct Arrays {
    explicit Arrays(int n) : a(3, some(3 * n)), b(3, some(3 * n)), c(3, some(3 * n)), d(3, some(3 * n))
    {
        DataInitialize(&out);
    }

    Around<Data> a, b, c, d;
    Data out;
    Xfm m = {{0.5, 0.25, -1, 0}, {2, 1, 0.125, 0}, {-0.5, 3, 1, 0}, {7, 8, 9, 1}};
};

template <void (*run)(Arrays&)>
Work on_arrays(int n)
{
    return [arrays = std::make_shared<Arrays>(n)] { run(*arrays); };
}

void mix(Arrays& x)
{
    DataMix(&x.a, &x.b, 0.25, 0.75, &x.out);
}
void mix_four(Arrays& x)
{
    Data4Mix(&x.a, &x.b, &x.c, &x.d, 0.1, 0.2, 0.3, 0.4, &x.out);
}
/// Two corners around numbers of its own.
struct Box : Data {
    Box()
    {
        DataInitialize(this);
        type = DATA_TYPE_DOUBLE;
        count = 2;
        dim = 3;
        dvals = values;
    }

    double values[6];
};

void bounds(Arrays& x)
{
    Box box;
    DataBBox(&x.a, &box);
}
void copy(Arrays& x)
{
    DataCopy(&x.a, &x.out);
    DataDispose(&x.out);
}
void reverse(Arrays& x)
{
    DataReverse(&x.a);
}
void transform(Arrays& x)
{
    TransformData(x.m, &x.a, &x.b);
}

#ifdef KORVALE_HAS_STEPS
void mix_steps(Arrays& x)
{
    reference::mix(&x.a, &x.b, 0.25, 0.75, &x.out);
}
void mix_four_steps(Arrays& x)
{
    const double weights[] = {0.1, 0.2, 0.3, 0.4};
    reference::mix_four(&x.a, &x.b, &x.c, &x.d, weights, &x.out);
}
void bounds_steps(Arrays& x)
{
    Box box;
    reference::bbox(&x.a, &box);
}
void copy_steps(Arrays& x)
{
    reference::copy(&x.a, &x.out);
    DataDispose(&x.out);
}
void reverse_steps(Arrays& x)
{
    reference::reverse(&x.a);
}
void transform_steps(Arrays& x)
{
    reference::transform(x.m, &x.a, &x.b);
}
#endif

#ifdef KORVALE_HAS_EIGEN
void eigen_transform(Arrays& x)
{
    using Points = Eigen::Map<Eigen::Matrix<double, 3, Eigen::Dynamic>>;
    Points from(x.a.numbers.data(), 3, x.a.count), to(x.b.numbers.data(), 3, x.b.count);
    const Eigen::Map<Eigen::Matrix4d> m(x.m[0]);
    to.noalias() = m.topLeftCorner<3, 3>() * from;
    to.colwise() += m.block<3, 1>(0, 3);
    keep(to);
}
void eigen_mix(Arrays& x)
{
    using Numbers = Eigen::Map<Eigen::ArrayXd>;
    Numbers a(x.a.numbers.data(), 3 * x.a.count), b(x.b.numbers.data(), 3 * x.b.count);
    Numbers c(x.c.numbers.data(), 3 * x.c.count);
    c = 0.25 * a + 0.75 * b;
    keep(c);
}
#endif

/// A wound path of n points.
std::vector<double> wound(int n)
{
    std::vector<double> xyz;
    for (int i = 0; i < n; ++i) {
        const double t = 6.283185307179586 * i / n;
        xyz.insert(xyz.end(),
                   {(2 + std::cos(3 * t)) * std::cos(2 * t), (2 + std::cos(3 * t)) * std::sin(2 * t), std::sin(3 * t)});
    }
    return xyz;
}

template <int closed>
Work frames(int n)
{
    return [path = std::make_shared<Around<Data>>(3, wound(n)), out = std::make_shared<std::vector<double>>(16 * n)] {
        path2xfm(path.get(), closed, reinterpret_cast<Xfm*>(out->data()));
    };
}

Work flatten(int n)
{
    return [path = std::make_shared<Around<Data>>(3, wound(n))] {
        Xfm xfm, reverse;
        data_to_xy_xfms(path.get(), xfm, reverse, 1);
        keep(xfm);
    };
}

std::vector<double> random_triangles(int n)
{
    Numbers random;
    std::vector<double> values;
    for (int i = 0; i < n; ++i) {
        const double corner[3] = {random.uniform(-5, 5), random.uniform(-5, 5), random.uniform(-5, 5)};
        for (int k = 0; k < 9; ++k)
            values.push_back(corner[k % 3] + random.uniform(-0.1, 0.1));
    }
    return values;
}

template <int triangles>
Work sample(int n)
{
    struct Input {
        explicit Input(int points)
            : from(9, random_triangles(triangles)), to(3, std::vector<double>(static_cast<size_t>(3 * points)))
        {
        }
        Around<Data> from, to;
    };
    return [input = std::make_shared<Input>(n)] { DataTriSample(&input->from, 1, &input->to, nullptr, nullptr); };
}

#ifdef KORVALE_HAS_STEPS
Work sample_steps(int n)
{
    return [triangle = random_triangles(1), n] { keep(reference::sample_triangles(triangle, 1, n, {})); };
}
#endif

#ifdef KORVALE_HAS_CGAL
/// A point is drawn by its share of the area, as CGAL's own generator does for triangles in space.
template <int triangles>
Work cgal_sample(int n)
{
    using Kernel = CGAL::Simple_cartesian<double>;
    struct Corners {
        Kernel::Triangle_3 operator()(const Kernel::Triangle_3& t) const { return t; }
    };
    std::vector<Kernel::Triangle_3> list;
    const std::vector<double> v = random_triangles(triangles);
    for (size_t i = 0; i < v.size(); i += 9)
        list.emplace_back(Kernel::Point_3(v[i], v[i + 1], v[i + 2]), Kernel::Point_3(v[i + 3], v[i + 4], v[i + 5]),
                          Kernel::Point_3(v[i + 6], v[i + 7], v[i + 8]));
    return [list, n] {
        CGAL::Random random(1);
        CGAL::Random_points_in_triangles_3<Kernel::Point_3> generator(list, random);
        for (int i = 0; i < n; ++i, ++generator)
            keep(*generator);
    };
}
#endif

} // namespace

std::vector<Job> array_jobs()
{
    const std::vector<int> sizes = {1, 4, 16, 100, 1000, 1000000};
    std::vector<Job> jobs = {
        {"array.mix", sizes, on_arrays<mix>, 1.05, 10000},
        {"array.mix_four", sizes, on_arrays<mix_four>, 1.05, 10000},
        {"array.bounds", sizes, on_arrays<bounds>, 1.05, 10000},
        {"array.bounds_of_few", {}, on_arrays<bounds>, 1.05, 8}, // whole groups of lanes and nothing more
        {"array.copy", sizes, on_arrays<copy>},
        {"array.reverse", sizes, on_arrays<reverse>, 1.05, 10000},
        {"array.transform", sizes, on_arrays<transform>, 1.05, 10000},
        {"path.frames_open", {16, 1000, 100000}, frames<0>, 1.05, 8000},
        {"path.frames_closed", {16, 1000, 100000}, frames<1>, 1.05, 2000},
        {"path.flatten", {16, 1000, 100000}, flatten, 1.05, 2000},
        {"sample.one_triangle", {1, 16, 1000}, sample<1>, 1.05, 1000},
        {"sample.100k_triangles", {1, 1000000}, sample<100000>},
        {"sample.16k_triangles", {10000}, sample<16000>, 1.0, 10000},
    };
#ifdef KORVALE_HAS_STEPS
    jobs.insert(jobs.end(), {{"array.mix@steps", sizes, on_arrays<mix_steps>},
                             {"array.mix_four@steps", sizes, on_arrays<mix_four_steps>},
                             {"array.bounds@steps", sizes, on_arrays<bounds_steps>},
                             {"array.copy@steps", sizes, on_arrays<copy_steps>},
                             {"array.reverse@steps", sizes, on_arrays<reverse_steps>},
                             {"array.transform@steps", sizes, on_arrays<transform_steps>},
                             {"sample.one_triangle@steps", {1, 16, 1000}, sample_steps}});
#endif
#ifdef KORVALE_HAS_EIGEN
    jobs.push_back({"array.mix@Eigen", sizes, on_arrays<eigen_mix>});
    jobs.push_back({"array.transform@Eigen", sizes, on_arrays<eigen_transform>});
#endif
#ifdef KORVALE_HAS_CGAL
    jobs.push_back({"sample.100k_triangles@CGAL", {1, 1000000}, cgal_sample<100000>});
    jobs.push_back({"sample.16k_triangles@CGAL", {10000}, cgal_sample<16000>});
#endif
    return jobs;
}

} // namespace korvale::bench
