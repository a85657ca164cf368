#pragma once

#include "Core/Progress.h"
#include "Core/Property.h"
#include "Proc/Interfaces/IData.h"
#include "Proc/Interfaces/Settings.h"

#include <string>
#include <vector>

namespace Velnor::Proc {

/// Progress of an effect: the controller that it reports to and obeys, and how media time maps to its units.
struct VELNOR_API TimeToProgress {
    intrusive_ptr<Core::IProgressController> controller = Core::ProgressControllerStub::Create(); ///< Never null.
    std::int64_t begin = 0; ///< Microseconds of media time that count as 0.
    std::int64_t end = 0;   ///< Microseconds of media time that count as done; `begin` for stills.

    /// 0 to 1. Stills, whose begin and end are one, are done at any time.
    double GetFraction(std::int64_t microseconds) const;
};

/// Root of the effects. The order of the virtual operations is binary contract. One instance processes one picture at a
/// time; it holds no lock.
class VELNOR_API IEffect : public virtual IRefCountable {
public:
    ~IEffect() override = default;

    /// Throws std::bad_cast, changing nothing, when the settings are not of this effect's class.
    virtual void SetSettings(Settings const& settings) = 0;

    /// Drops what an effect with memory keeps between the frames of one sequence. Stills have none.
    virtual void Flush() = 0;

    virtual void ResetSettings() = 0; ///< Back to default settings.

    /// The form for callers that do not know the kind: one element for a one-input effect, two for a two-input effect
    /// (else std::logic_error "invalid data count"), any number for a var-input effect. The others leave the vector.
    virtual DataHandle ProcessData(std::vector<DataHandle> const& inputs) = 0;

    virtual Core::Property GetStatistic() = 0;
    virtual Settings const& GetSettingsBase() const = 0;

    /// Null puts a stub in place.
    virtual void SetProgressController(intrusive_ptr<Core::IProgressController> const& controller) = 0;
    virtual TimeToProgress const& GetProgress() const = 0;
    virtual TimeToProgress& GetProgress() = 0;
    virtual void SetProgress(TimeToProgress const& progress) = 0;
};

/// The progress operations, the same for every kind.
template <class Kind>
class WithProgress : public Kind {
public:
    void SetProgressController(intrusive_ptr<Core::IProgressController> const& controller) override {
        progress.controller = controller ? controller : Core::ProgressControllerStub::Create();
    }
    TimeToProgress const& GetProgress() const override { return progress; }
    TimeToProgress& GetProgress() override { return progress; }
    void SetProgress(TimeToProgress const& next) override {
        progress = next;
        SetProgressController(next.controller);
    }

private:
    TimeToProgress progress;
};

} // namespace Velnor::Proc
