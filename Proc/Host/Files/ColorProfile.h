#pragma once

#include "Proc/Host/Files/RowSink.h"
#include "Proc/Interfaces/Color.h"

#include <memory>
#include <string>
#include <vector>

namespace Velnor::Proc::Files {

/// Whether an ICC profile is for grey or for RGB pictures, as its header says (ICC.1:2010, 7.2.6).
bool IsProfileFor(std::string const& profile, bool grey);

/// Whether all bytes of an ICC profile are there, as its header counts them; true of none.
bool IsProfileWhole(std::string const& profile);

/// Whether an ICC profile is one of the many of sRGB, which differ in their rounding, by a level at most.
bool IsSrgb(std::string const& profile);

/// What a colour of sRGB is in the colours of an ICC profile; opacity stays. The colour as it is for a profile of sRGB
/// and for one that is not for RGB or is damaged. As all here relative colorimetric, with black point compensation.
Color FromSrgb(Color const& color, std::string const& profile);

/// Takes the rows of a picture from the colours of an ICC profile to sRGB, grey to the grey of sRGB.
class SrgbConversion {
public:
    /// @param profile  empty: rows are left as they are
    /// @param bands    1 to 4; the last of an even number is opacity, which stays
    /// @param pixels   of a row
    /// Throws std::invalid_argument for a profile that is damaged or not for such pixels; it reads on after a name.
    SrgbConversion(std::string const& profile, int bands, SampleDepth depth, int pixels);

    /// The row, converted; good until the next one.
    void const* Convert(void const* row);

private:
    std::shared_ptr<void> transform;   ///< Of the colour library; null for none.
    std::vector<std::uint16_t> buffer; ///< A row of samples of either depth.
    std::uint32_t const width;
};

} // namespace Velnor::Proc::Files
