// Whole-array operations and sampling.
#include <cstring>
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_STEPS
#include "platform/layer.h"
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

/// Input arrays of n elements, and an output that is used again.
struct Arrays {
    Arrays(int n, int width)
        : a(width, some(width * n)), b(width, some(width * n)), c(width, some(width * n)), d(width, some(width * n))
    {
        DataInitialize(&out);
    }

    Around<Data> a, b, c, d;
    Data out;
    Xfm m = {{0.5, 0.25, -1, 0}, {2, 1, 0.125, 0}, {-0.5, 3, 1, 0}, {7, 8, 9, 1}};
};

template <void (*run)(Arrays&), int width = 3>
Work on_arrays(int n)
{
    return [arrays = std::make_shared<Arrays>(n, width)] { run(*arrays); };
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
    explicit Box(int width)
    {
        DataInitialize(this);
        type = DATA_TYPE_DOUBLE;
        count = 2;
        dim = width;
        dvals = values;
    }

    double values[2 * 9];
};

void bounds(Arrays& x)
{
    Box box(x.a.dim);
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

/// Points one at a time.
Work append(int n)
{
    return [n] {
        DATAstruct d;
        DATAInitialize(&d);
        d.dim = 3;
        for (d.count = 1; d.count <= n; ++d.count) {
            DATAReAllocate(&d);
            for (int k = 0; k < 3; ++k)
                d.dvals[3 * (d.count - 1) + k] = d.count;
        }
        DATADispose(&d);
    };
}

/// As many points into a buffer of the final size.
Work fill_once(int n)
{
    return [n] {
        DATAstruct d;
        DATAInitialize(&d);
        d.dim = 3;
        d.count = n;
        DATAAllocate(&d);
        for (int i = 0; i < 3 * n; ++i)
            d.dvals[i] = i;
        keep(*d.dvals);
        DATADispose(&d);
    };
}

void copy_bytes(Arrays& x)
{
    std::memcpy(x.b.numbers.data(), x.a.numbers.data(), x.a.numbers.size() * sizeof(double));
    keep(x);
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
    Box box(x.a.dim);
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
void eigen_bounds(Arrays& x)
{
    const Eigen::Map<const Eigen::Matrix3Xd> points(x.a.numbers.data(), 3, x.a.count);
    const Eigen::Vector3d low = points.rowwise().minCoeff(), high = points.rowwise().maxCoeff();
    keep(low);
    keep(high);
}
void eigen_reverse(Arrays& x)
{
    Eigen::Map<Eigen::Matrix3Xd>(x.a.numbers.data(), 3, x.a.count).rowwise().reverseInPlace();
    keep(x);
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
template <int triangles>
Work sample_steps(int n)
{
    return [corners = random_triangles(triangles), n] { keep(reference::sample_triangles(corners, 1, n, {})); };
}

/// The random numbers alone.
Work draw(int n)
{
    return [n] {
        for (int i = 0; i < 3 * n; ++i)
            keep(Mwrand());
    };
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
    const std::vector<int> few = {1, 4, 16, 100, 1000};
    std::vector<Job> jobs = {
        {"array.mix", sizes, on_arrays<mix>, 1.05, 10000},
        {"array.mix_four", sizes, on_arrays<mix_four>, 1.05, 10000},
        {"array.bounds", sizes, on_arrays<bounds>, 1.05, 10000},
        {"array.bounds_of_few", {}, on_arrays<bounds>, 1.05, 8}, // whole groups of lanes and nothing more
        {"array.bounds_of_triangles", few, on_arrays<bounds, 9>},
        {"array.copy", sizes, on_arrays<copy>},
        {"array.reverse", sizes, on_arrays<reverse>, 1.05, 10000},
        {"array.transform", sizes, on_arrays<transform>, 1.05, 10000},
        {"array.transform@copy", sizes, on_arrays<copy_bytes>},
        {"array.append", {1000, 10000}, append},
        {"array.append@filled_once", {1000, 10000}, fill_once},
        {"sample.one_triangle", {1, 16, 1000}, sample<1>, 1.05, 1000},
        {"sample.100k_triangles", {1, 1000000}, sample<100000>},
        {"sample.16k_triangles", {10000}, sample<16000>, 1.0, 10000},
    };
#ifdef KORVALE_HAS_STEPS
    jobs.insert(jobs.end(), {{"array.mix@steps", sizes, on_arrays<mix_steps>},
                             {"array.mix_four@steps", sizes, on_arrays<mix_four_steps>},
                             {"array.bounds@steps", sizes, on_arrays<bounds_steps>},
                             {"array.bounds_of_triangles@steps", few, on_arrays<bounds_steps, 9>},
                             {"array.copy@steps", sizes, on_arrays<copy_steps>},
                             {"array.reverse@steps", sizes, on_arrays<reverse_steps>},
                             {"array.transform@steps", sizes, on_arrays<transform_steps>},
                             {"sample.one_triangle@steps", {1, 16, 1000}, sample_steps<1>},
                             {"sample.one_triangle@draws", {1, 16, 1000}, draw},
                             {"sample.16k_triangles@steps", {10000}, sample_steps<16000>}});
#endif
#ifdef KORVALE_HAS_EIGEN
    jobs.insert(jobs.end(), {{"array.mix@Eigen", sizes, on_arrays<eigen_mix>},
                             {"array.bounds@Eigen", sizes, on_arrays<eigen_bounds>},
                             {"array.reverse@Eigen", sizes, on_arrays<eigen_reverse>},
                             {"array.transform@Eigen", sizes, on_arrays<eigen_transform>}});
#endif
#ifdef KORVALE_HAS_CGAL
    jobs.push_back({"sample.100k_triangles@CGAL", {1, 1000000}, cgal_sample<100000>});
    jobs.push_back({"sample.16k_triangles@CGAL", {10000}, cgal_sample<16000>});
#endif
    return jobs;
}

} // namespace korvale::bench
