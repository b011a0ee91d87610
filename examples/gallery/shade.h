#pragma once

#include <vector>

#include "mesh.h"
#include "picture.h"

namespace gallery {

/// Where a stage is seen from.
struct Camera {
    Vec3 eye, target;
    Vec3 up{0, 0, 1};
    double angle = 30;  ///< degrees from the lower to the upper edge of the picture; 0 for parallel rays
    double height = 10; ///< what parallel rays see from the lower to the upper edge
};

/// What a surface looks like.
struct Material {
    Colour colour = hex(0xc9ccd1);
    double shine = 0.25; ///< strength of the highlight
    double gloss = 40;   ///< how narrow the highlight is
    double crease = 40;  ///< edges sharper than this many degrees are drawn sharp
    bool shadow = true;  ///< whether it throws one
};

/// Draws meshes as solids, with a key light that throws shadows, a fill light and a sky.
class Stage {
public:
    explicit Stage(const Camera& camera);

    void add(const Mesh& mesh, const Material& material);

    /// With a colour of its own for each point.
    void add(const Mesh& mesh, const Material& material, const std::vector<Colour>& colours);

    /// Where the key light comes from, in the camera's right, up and backward; above the left shoulder at first.
    void light_from(Vec3 direction);

    /// The picture in front of a background that fades from `above` to `below`.
    Picture render(int width, int height, Colour above = kPaper, Colour below = kPaper) const;

private:
    struct Face {
        Vec3 points[3], normals[3], colours[3]; // colours as amounts of light
        double shine, gloss;
        bool shadow;
    };

    Camera camera_;
    Vec3 right_, up_, back_, key_;
    std::vector<Face> faces_;

    friend class Rendering;
};

} // namespace gallery
