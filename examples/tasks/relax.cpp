// A cube pulled out of shape finds back: its edges, its volume, one corner held, and progress on the way.

#include <cstdio>
#include <vector>

#include <korvale.hpp>

int main()
{
    std::vector<korvale::Point> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back({i & 1 ? 1.0 : 0.0, i & 2 ? 1.0 : 0.0, i & 4 ? 1.0 : 0.0});
    const std::vector<int32_t> sizes(6, 4);
    const std::vector<int32_t> faces = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};

    korvale::Relaxer relaxer(corners, sizes, faces);
    relaxer.keep("lengths").keep("angles", 0.5);
    std::vector<bool> held(8);
    held[0] = true;
    relaxer.hold(held);

    std::vector<korvale::Point> cube = corners;
    for (korvale::Point& p : cube)
        p[2] *= 1.4;
    std::printf("pulled:  energy %.4f\n", relaxer.energy(cube));
    const auto result = relaxer.run(cube, {.steps = 200, .energy = 1e-4, .progress = [](int step, double energy) {
                                               if (step % 40 == 0)
                                                   std::printf("step %3d: energy %.1e\n", step, energy);
                                               return true; // go on
                                           }});
    std::printf("%s, side %.2f, held corner %g %g %g\n",
                result.stop == korvale::Stop::energy ? "in shape again" : "not there yet", cube[4][2], cube[0][0],
                cube[0][1], cube[0][2]);
}
