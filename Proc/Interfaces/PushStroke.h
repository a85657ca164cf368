#pragma once

namespace Velnor::Proc {

/// The way of a push brush over a picture, in pixels.
struct PushStroke {
    int fromX = 0, fromY = 0;
    int toX = 0, toY = 0;
    friend bool operator==(PushStroke const&, PushStroke const&) = default;
};

} // namespace Velnor::Proc
