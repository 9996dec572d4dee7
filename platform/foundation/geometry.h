#pragma once

namespace plat {

// CGPoint / CGSize / CGRect, in points.
struct Point {
    double x = 0, y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};
struct Size {
    double width = 0, height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};
struct Rect {
    Point origin;
    Size size;
    friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace plat
