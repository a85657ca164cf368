// Cutter: cuts the picture into patches of one size, which may overlap.
//
//     padded  = picture, enlarged to the right and below so that the patches cover it exactly
//     patches = views on the padded picture, row by row, left to right
//
// The patches take the inputs' place in the caller's vector; there is no other result.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectCutter.h"
#include "Proc/Settings/SettingsEffectPad.h"

#include <string>

namespace Velnor::Proc {
namespace {

/// Patches along one side. A negative overlap leaves gaps between them; 32-bit arithmetic wraps to the right numbers.
struct Cuts {
    /// Throws EffectException, naming the settings "patch-<side>" and "overlap-<axis>", when they have no meaning.
    Cuts(std::string const& side, int patchSize, std::string const& axis, int overlapSize)
        : patch(static_cast<std::uint32_t>(patchSize)), overlap(static_cast<std::uint32_t>(overlapSize)) {
        if (overlapSize >= patchSize)
            VELNOR_THROW(EffectException, "The setting overlap-" + axis + " is " + std::to_string(overlapSize) +
                                              "; it must be below patch-" + side + ", which is " +
                                              std::to_string(patchSize) + ".");
    }

    std::uint32_t GetStep() const { return patch - overlap; }

    std::uint32_t GetPaddedSize(std::uint32_t size) const {
        if (size < patch) return patch;
        std::uint32_t const rest = (size - patch) % GetStep();
        return rest == 0 ? size : size + (GetStep() - rest);
    }

    std::uint32_t const patch;
    std::uint32_t const overlap;
};

} // namespace

class Cutter : public EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectCutter> {
public:
    Cutter(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseVarInput(effectFactory, effectContext), pad(MakeOneInput(SettingsEffectPad())) {}

    DataHandle ProcessInternal(std::vector<DataHandle> const& inputs) override {
        if (inputs.empty()) VELNOR_THROW(EffectException, "A picture is needed, none is given.");
        RequirePicture(inputs.front().get());
        Cuts const across("width", settings.GetPatchWidth(), "x", settings.GetOverlapX());
        Cuts const down("height", settings.GetPatchHeight(), "y", settings.GetOverlapY());

        DataHandle const padded = MakePadded(AsVideo(inputs.front()), across, down);
        std::vector<DataHandle> patches = Cut(AsVideo(padded), across, down);
        // The list of inputs is the list of results: its owner hands it over as one to be read, and expects it filled.
        const_cast<std::vector<DataHandle>&>(inputs).swap(patches);
        return nullptr;
    }

private:
    DataHandle MakePadded(IDataVideo const& picture, Cuts const& across, Cuts const& down) const {
        DataHandle padded = picture.MakeCopy(CopyMode::Value);
        FrameFormat const frame = picture.GetFrameFormat();
        std::uint32_t const width = across.GetPaddedSize(frame.width);
        std::uint32_t const height = down.GetPaddedSize(frame.height);
        if (width == frame.width && height == frame.height) return padded;
        bool const isColor = settings.GetPadMode() == SettingsEffectCutter::COLOR;
        RunWith(*pad,
                SettingsEffectPad(isColor ? SettingsEffectPad::COLOR : SettingsEffectPad::MIRROR)
                    .SetMarginColor(settings.GetPadColor())
                    .SetMargins(CropInfo(0, 0, width - frame.width, height - frame.height)),
                padded);
        return padded;
    }

    static std::vector<DataHandle> Cut(IDataVideo const& padded, Cuts const& across, Cuts const& down) {
        FrameFormat const frame = padded.GetFrameFormat();
        std::vector<DataHandle> patches;
        for (std::uint32_t y = 0; y < frame.height - down.overlap; y += down.GetStep())
            for (std::uint32_t x = 0; x < frame.width - across.overlap; x += across.GetStep()) {
                VideoHandle const patch = padded.MakeCopy(CopyMode::Value);
                patch->SetRectangle(x, y, across.patch, down.patch);
                patches.push_back(patch);
            }
        return patches;
    }

    intrusive_ptr<IOneInputEffectVideo> pad;
};

VELNOR_EFFECT(SettingsEffectCutter, VarInput, Cutter)

} // namespace Velnor::Proc
