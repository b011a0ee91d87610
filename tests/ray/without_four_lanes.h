#pragma once

namespace korvale::test {

/// While it lives, the library in this program runs as on a processor without four lanes.
class WithoutFourLanes {
public:
    WithoutFourLanes();
    ~WithoutFourLanes();
    WithoutFourLanes(const WithoutFourLanes&) = delete;
    WithoutFourLanes& operator=(const WithoutFourLanes&) = delete;

private:
    unsigned features_;
};

} // namespace korvale::test
