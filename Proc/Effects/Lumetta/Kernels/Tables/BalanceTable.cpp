#include "Proc/Effects/Lumetta/Kernels/Tables/BalanceTable.h"

namespace Velnor::Proc::Kernels {
namespace {

constexpr int TOP = 255;
constexpr int STEEP_JUMP = 5;
constexpr int STEEP_SLOPE = 2;

struct Segment {
    int x0, x1, y0, y1;
    int operator()(int x) const { return (y1 - y0) * (x - x0) / (x1 - x0) + y0; }
};

} // namespace

Table BalanceTable(int c, int grey) {
    Segment const below{0, c, 0, grey};     // has no length, and is never evaluated, where c is 0
    Segment const above{c, TOP, grey, TOP}; // likewise where c is 255
    int const jump = c == TOP ? 0 : above(c + 1) - grey;
    bool const steep = jump >= STEEP_JUMP;

    Table table;
    for (int i = 0; i <= TOP; ++i) {
        int value = 0;
        if (c != 0 && i <= c)
            value = below(i);
        else if (steep)
            value = grey + STEEP_SLOPE * (i - c);
        else
            value = above(i);
        table[static_cast<std::size_t>(i)] = static_cast<unsigned char>(value);
    }
    return table;
}

} // namespace Velnor::Proc::Kernels
