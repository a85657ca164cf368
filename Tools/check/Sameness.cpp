// Whether what an effect makes depends on anything but its settings and its picture.

#include "Tools/check/Promises.h"

namespace Velnor::Proc::Check {
namespace {

Bytes MakeOf(Subject const& subject, IEffect& effect, PixFmt format, std::uint32_t width, std::uint32_t height,
             std::uint32_t seed, Journal& journal) {
    journal.Begin(NameOf(format, width, height));
    return Try(effect, subject.MakeInputs(format, width, height, seed), journal).GetBytes();
}

struct Photograph {
    PixFmt format;
    std::uint32_t width, height, seed;
};

/// Each differs from the one before in something else: content, size, format, and back.
constexpr std::array PHOTOGRAPHS{Photograph{PixFmt::RGB24, 33, 21, 1}, Photograph{PixFmt::RGB24, 33, 21, 5},
                                 Photograph{PixFmt::RGB24, 20, 34, 1}, Photograph{PixFmt::RGBA, 20, 34, 1},
                                 Photograph{PixFmt::GRAY8, 20, 34, 2}, Photograph{PixFmt::YUV420P, 7, 5, 3},
                                 Photograph{PixFmt::RGB24, 33, 21, 1}};

} // namespace

void CheckSameness(Subject const& subject, Journal& journal) {
    auto const settings = subject.MakeTypicalSettings();
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::RGBA, PixFmt::YUV420P}) {
        auto const make = [&](IEffect& effect) { return MakeOf(subject, effect, format, 33, 21, 1, journal); };
        auto const first = subject.Make(*settings);
        auto const second = subject.Make(); // Beside the first one, before either has worked.
        Bytes const once = make(*first);
        second->SetSettings(*settings);
        journal.Require(make(*first) == once, "other bytes the second time");
        journal.Require(make(*second) == once, "other bytes from another instance");
    }
}

void CheckIndependence(Subject const& subject, Journal& journal) {
    auto const settings = subject.MakeTypicalSettings();
    auto const seasoned = subject.Make(*settings);
    for (auto const& [format, width, height, seed] : PHOTOGRAPHS) {
        Bytes const after = MakeOf(subject, *seasoned, format, width, height, seed, journal);
        Bytes const fresh = MakeOf(subject, *subject.Make(*settings), format, width, height, seed, journal);
        journal.Require(after == fresh, "other bytes after other photographs");
    }
}

} // namespace Velnor::Proc::Check
