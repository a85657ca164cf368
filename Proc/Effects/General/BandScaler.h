#pragma once

#include "Proc/Effects/General/Scaler.h"

#include <vector>

namespace Velnor::Proc {

/// Changes the format of a picture with libswscale, on as many threads as the machine and the picture's size make
/// worth while. The result is the same as on one: only formats whose planes all have as many rows as the picture are
/// cut into bands, since each of their rows is made of one row of the source. One call at a time.
class BandScaler {
public:
    /// Source and target have the same size; what else holds for Scaler::Scale holds here. Throws as that does.
    void Convert(ScalerSource const& source, ScalerTarget const& target);

    Scaler& GetScaler() { return scaler; }

private:
    void ConvertRow(ScalerSource const& source, ScalerTarget const& target, std::uint32_t y);

    Scaler scaler;
    std::vector<Scaler> workerScalers;
    std::vector<unsigned char> row;
};

} // namespace Velnor::Proc
