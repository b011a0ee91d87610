// Solids are drawn twice, first as the key light sees them, which leaves the distance to the nearest surface, then as
// the camera sees them, each picture element three by three times. An element is lit by the key light as far as its
// surroundings in the first drawing are not nearer to the light than itself.

#include "shade.h"

#include <algorithm>
#include <limits>

namespace gallery {

// A corner on a drawing: element coordinates, and 1 / depth (perspective) or depth (parallel), which is linear there.
struct Spot {
    double x, y, z;
};

namespace {

constexpr int kSamples = 3;       // per pixel and direction
constexpr int kShadowSize = 2048; // elements of the light's drawing, in each direction
constexpr size_t kLooks = 36;     // into the light's drawing, for the samples of a pixel together

Vec3 light_of(Colour c)
{
    const auto lift = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return {lift(c.r), lift(c.g), lift(c.b)};
}

Colour colour_of(Vec3 light)
{
    const auto lower = [](double v) {
        v = std::clamp(v, 0.0, 1.0);
        return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
    };
    return {lower(light.x), lower(light.y), lower(light.z)};
}

Vec3 product(Vec3 a, Vec3 b)
{
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

// The shares of the three corners at an element; they add up to 1.
struct Shares {
    double a, b, c;
};

bool shares_at(const Spot* s, double x, double y, Shares& shares)
{
    const double area = (s[1].x - s[0].x) * (s[2].y - s[0].y) - (s[1].y - s[0].y) * (s[2].x - s[0].x);
    if (area == 0)
        return false;
    shares.b = ((x - s[0].x) * (s[2].y - s[0].y) - (y - s[0].y) * (s[2].x - s[0].x)) / area;
    shares.c = ((s[1].x - s[0].x) * (y - s[0].y) - (s[1].y - s[0].y) * (x - s[0].x)) / area;
    shares.a = 1 - shares.b - shares.c;
    return shares.a >= 0 && shares.b >= 0 && shares.c >= 0;
}

// Calls draw(x, y, z) for each element of a width x height drawing whose middle lies in the triangle.
template <class Draw>
void cover(const Spot* s, int width, int height, Draw draw)
{
    const auto low = [](double a, double b, double c) { return std::min({a, b, c}); };
    const auto high = [](double a, double b, double c) { return std::max({a, b, c}); };
    const int x0 = std::max(0, int(std::floor(std::max(0.0, low(s[0].x, s[1].x, s[2].x)))));
    const int x1 = int(std::ceil(std::min(double(width), high(s[0].x, s[1].x, s[2].x))));
    const int y0 = std::max(0, int(std::floor(std::max(0.0, low(s[0].y, s[1].y, s[2].y)))));
    const int y1 = int(std::ceil(std::min(double(height), high(s[0].y, s[1].y, s[2].y))));
    for (int y = y0; y < y1; y++) {
        for (int x = x0; x < x1; x++) {
            Shares k;
            if (shares_at(s, x + 0.5, y + 0.5, k))
                draw(x, y, k.a * s[0].z + k.b * s[1].z + k.c * s[2].z);
        }
    }
}

} // namespace

Stage::Stage(const Camera& camera) : camera_(camera)
{
    back_ = unit(camera.eye - camera.target);
    right_ = unit(cross(camera.up, back_));
    up_ = cross(back_, right_);
    light_from({-0.55, 0.75, 0.9});
}

void Stage::light_from(Vec3 d)
{
    key_ = unit(d.x * right_ + d.y * up_ + d.z * back_);
}

void Stage::add(const Mesh& mesh, const Material& material)
{
    add(mesh, material, std::vector<Colour>(mesh.points.size(), material.colour));
}

void Stage::add(const Mesh& mesh, const Material& material, const std::vector<Colour>& colours)
{
    const std::vector<std::array<Vec3, 3>> normals = corner_normals(mesh, material.crease);
    for (size_t i = 0; i < mesh.triangles.size(); i++) {
        Face face{};
        for (size_t k = 0; k < 3; k++) {
            const size_t corner = size_t(mesh.triangles[i][k]);
            face.points[k] = mesh.points[corner];
            face.normals[k] = normals[i][k];
            face.colours[k] = light_of(colours[corner]);
        }
        face.shine = material.shine;
        face.gloss = material.gloss;
        face.shadow = material.shadow;
        faces_.push_back(face);
    }
}

// One call of render.
class Rendering {
public:
    Rendering(const Stage& stage, int width, int height)
        : stage_(stage), width_(width * kSamples), height_(height * kSamples)
    {
        for (size_t seed = 0; seed < kLooks; seed++) { // spread like the seeds of a sunflower
            const double radius = 5 * std::sqrt((double(seed) + 0.5) / kLooks), turn = double(seed) * 2.39996323;
            looks_[seed] = {radius * std::cos(turn), radius * std::sin(turn)};
        }
    }

    void see_from_light();
    void see_from_camera();
    Vec3 light_at(int x, int y, Vec3 background) const;

private:
    bool project(Vec3 p, Spot& spot) const;
    double key_share(Vec3 p, Vec3 normal, int x, int y) const;

    const Stage& stage_;
    int width_, height_; // in samples

    Vec3 shadow_right_, shadow_up_, shadow_middle_;
    double shadow_scale_ = 1; // elements per unit
    std::vector<float> shadow_depth_;
    Point looks_[kLooks];

    std::vector<float> depth_;
    std::vector<int> face_; // in front, or -1
    std::vector<std::array<Spot, 3>> spots_;
};

void Rendering::see_from_light()
{
    const Vec3 key = stage_.key_;
    shadow_right_ = unit(cross(std::fabs(key.z) < 0.9 ? Vec3{0, 0, 1} : Vec3{1, 0, 0}, key));
    shadow_up_ = cross(key, shadow_right_);
    Vec3 low{1e300, 1e300, 1e300}, high{-1e300, -1e300, -1e300};
    for (const Stage::Face& face : stage_.faces_) {
        for (Vec3 p : face.points) {
            if (!face.shadow)
                continue;
            low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
        }
    }
    shadow_middle_ = 0.5 * (low + high);
    shadow_scale_ = kShadowSize / std::max(1e-9, 1.01 * length(high - low));
    shadow_depth_.assign(size_t(kShadowSize) * kShadowSize, -std::numeric_limits<float>::max());
    for (const Stage::Face& face : stage_.faces_) {
        if (!face.shadow)
            continue;
        Spot s[3];
        for (int k = 0; k < 3; k++) {
            const Vec3 d = face.points[k] - shadow_middle_;
            s[k] = {kShadowSize / 2.0 + shadow_scale_ * dot(d, shadow_right_),
                    kShadowSize / 2.0 + shadow_scale_ * dot(d, shadow_up_), dot(d, key)};
        }
        cover(s, kShadowSize, kShadowSize, [&](int x, int y, double z) {
            float& nearest = shadow_depth_[size_t(y) * kShadowSize + size_t(x)];
            nearest = std::max(nearest, float(z));
        });
    }
}

bool Rendering::project(Vec3 p, Spot& spot) const
{
    const Camera& camera = stage_.camera_;
    const Vec3 d = p - camera.eye;
    const double depth = -dot(d, stage_.back_);
    double scale = height_ / camera.height;
    spot.z = -depth;
    if (camera.angle > 0) {
        if (depth <= 1e-6 * length(camera.eye - camera.target))
            return false;
        scale = height_ / (2 * std::tan(camera.angle * 3.14159265358979323846 / 360) * depth);
        spot.z = 1 / depth;
    }
    spot.x = width_ / 2.0 + scale * dot(d, stage_.right_);
    spot.y = height_ / 2.0 - scale * dot(d, stage_.up_);
    return true;
}

void Rendering::see_from_camera()
{
    depth_.assign(size_t(width_) * size_t(height_), -std::numeric_limits<float>::max());
    face_.assign(depth_.size(), -1);
    spots_.resize(stage_.faces_.size());
    for (size_t i = 0; i < stage_.faces_.size(); i++) {
        Spot* s = spots_[i].data();
        const Stage::Face& face = stage_.faces_[i];
        if (!project(face.points[0], s[0]) || !project(face.points[1], s[1]) || !project(face.points[2], s[2]))
            continue;
        cover(s, width_, height_, [&](int x, int y, double z) {
            const size_t at = size_t(y) * size_t(width_) + size_t(x);
            if (float(z) > depth_[at]) {
                depth_[at] = float(z);
                face_[at] = int(i);
            }
        });
    }
}

// How much of the key light arrives, by a few looks around the place, others for each of the samples of a pixel.
double Rendering::key_share(Vec3 p, Vec3 normal, int x, int y) const
{
    const Vec3 d = p + (2.0 / shadow_scale_) * normal - shadow_middle_;
    const double z = dot(d, stage_.key_) + 1.5 / shadow_scale_;
    const double across = kShadowSize / 2.0 + shadow_scale_ * dot(d, shadow_right_);
    const double along = kShadowSize / 2.0 + shadow_scale_ * dot(d, shadow_up_);
    const size_t sample = size_t((x % kSamples) * kSamples + y % kSamples);
    int lit = 0;
    for (size_t seed = sample; seed < kLooks; seed += kSamples * kSamples) {
        const int i = int(std::floor(across + looks_[seed].x));
        const int j = int(std::floor(along + looks_[seed].y));
        if (i < 0 || j < 0 || i >= kShadowSize || j >= kShadowSize ||
            z >= double(shadow_depth_[size_t(j) * kShadowSize + size_t(i)]))
            lit++;
    }
    return lit * double(kSamples * kSamples) / kLooks;
}

Vec3 Rendering::light_at(int x, int y, Vec3 background) const
{
    const size_t at = size_t(y) * size_t(width_) + size_t(x);
    if (face_[at] < 0)
        return background;
    const Stage::Face& face = stage_.faces_[size_t(face_[at])];
    const Spot* s = spots_[size_t(face_[at])].data();
    Shares k{};
    shares_at(s, x + 0.5, y + 0.5, k);
    if (stage_.camera_.angle > 0) { // 1 / depth is linear on the picture; what is linear in space is not
        k = {k.a * s[0].z, k.b * s[1].z, k.c * s[2].z};
        const double sum = k.a + k.b + k.c;
        k = {k.a / sum, k.b / sum, k.c / sum};
    }
    const auto blend = [&](const Vec3* v) { return k.a * v[0] + k.b * v[1] + k.c * v[2]; };
    const Vec3 p = blend(face.points);
    const Vec3 to_eye = stage_.camera_.angle > 0 ? unit(stage_.camera_.eye - p) : stage_.back_;
    Vec3 normal = unit(blend(face.normals));
    if (dot(normal, to_eye) < 0)
        normal = -1.0 * normal;

    const Vec3 fill_light = unit(0.9 * stage_.right_ + 0.15 * stage_.up_ + 0.7 * stage_.back_);
    const double facing = dot(normal, stage_.key_);
    const double key = facing > 0 ? facing * key_share(p, normal, x, y) : 0;
    const double fill = std::max(0.0, dot(normal, fill_light));
    const double sky = 0.5 + 0.5 * dot(normal, stage_.up_);
    const Vec3 light = 0.95 * key * Vec3{1.0, 0.97, 0.92} + 0.22 * fill * Vec3{0.85, 0.92, 1.0} +
                       (0.1 + 0.16 * sky) * Vec3{0.93, 0.97, 1.0};
    const double glance = std::max(0.0, dot(normal, unit(stage_.key_ + to_eye)));
    const double highlight = key > 0 ? face.shine * std::pow(glance, face.gloss) * std::min(1.0, 4 * key) : 0;
    return product(light, blend(face.colours)) + Vec3{highlight, highlight, highlight};
}

Picture Stage::render(int width, int height, Colour above, Colour below) const
{
    Rendering rendering(*this, width, height);
    rendering.see_from_light();
    rendering.see_from_camera();
    Picture picture(width, height);
    for (int y = 0; y < height; y++) {
        const Vec3 background = light_of(mix(above, below, (y + 0.5) / height));
        for (int x = 0; x < width; x++) {
            Vec3 sum;
            for (int j = 0; j < kSamples; j++)
                for (int i = 0; i < kSamples; i++)
                    sum = sum + rendering.light_at(x * kSamples + i, y * kSamples + j, background);
            picture.set(x, y, colour_of((1.0 / (kSamples * kSamples)) * sum));
        }
    }
    return picture;
}

} // namespace gallery
