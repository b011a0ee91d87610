#include "door/internal/side.h"

#include <initializer_list>

namespace korvale::door {

namespace {

/// A number that two doubles add up to, the second below the rounding of the first.
struct Pair {
    double sum, rest;
};

Pair add(double a, double b)
{
    const double sum = a + b, part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

/// Halves of 26 bits.
Pair split(double a)
{
    constexpr double kSplitter = 134217729.0; // 2^27 + 1
    const double c = kSplitter * a, high = c - (c - a);
    return {high, a - high};
}

Pair multiply(double a, double b)
{
    const double product = a * b;
    const Pair p = split(a), q = split(b);
    return {product, p.rest * q.rest - (((product - p.sum * q.sum) - p.rest * q.sum) - p.sum * q.rest)};
}

/// A sum without rounding, its parts ascending and without overlap.
class ExactSum {
public:
    void add(double value)
    {
        int kept = 0;
        for (int i = 0; i < size_; ++i) {
            const Pair pair = door::add(value, parts_[i]);
            value = pair.sum;
            if (pair.rest != 0.0)
                parts_[kept++] = pair.rest;
        }
        if (value != 0.0 || kept == 0)
            parts_[kept++] = value;
        size_ = kept;
    }
    void add_product(double a, double b)
    {
        const Pair product = multiply(a, b);
        add(product.rest);
        add(product.sum);
    }

    /// The largest part decides.
    int sign() const { return sign_of(parts_[size_ - 1]); }

private:
    static constexpr int kTerms = 16; // eight products, in two parts each
    double parts_[kTerms] = {};
    int size_ = 0;
};

} // namespace

int exact_side(const Place& a, const Place& b, const Place& c)
{
    const Pair bx = add(b.x, -a.x), by = add(b.y, -a.y), cx = add(c.x, -a.x), cy = add(c.y, -a.y);
    if (bx.rest == 0.0 && by.rest == 0.0 && cx.rest == 0.0 && cy.rest == 0.0) {
        const Pair left = multiply(bx.sum, cy.sum), right = multiply(by.sum, cx.sum);
        return left.sum != right.sum ? sign_of(left.sum - right.sum) : sign_of(left.rest - right.rest);
    }
    ExactSum sum; // of the products of all parts
    for (const double p : {bx.rest, bx.sum})
        for (const double q : {cy.rest, cy.sum})
            sum.add_product(p, q);
    for (const double p : {by.rest, by.sum})
        for (const double q : {cx.rest, cx.sum})
            sum.add_product(-p, q);
    return sum.sign();
}

} // namespace korvale::door
