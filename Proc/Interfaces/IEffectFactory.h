#pragma once

#include "Proc/Interfaces/IOneInputEffect.h"
#include "Proc/Interfaces/ITwoInputEffect.h"
#include "Proc/Interfaces/IVarInputEffect.h"

#include <string>
#include <vector>

namespace Velnor::Proc {

enum class EffectKind : std::uint32_t { OneInput, TwoInput, VarInput };

/// Makes effects by the class identifier of their settings and the name of an implementation. ImplNames::DEFAULT stands
/// for the implementation registered under that name, else for the framework's own (VELNOR), else for the first one
/// registered. Each Create operation throws ProcException when nothing of that kind is registered, naming what is.
/// Thread-safe. The order of the virtual operations is binary contract.
class VELNOR_API IEffectFactory : public IRefCountable {
public:
    ~IEffectFactory() override = default;                                                                     // 1st
    virtual bool Has(std::string const& classId, std::string const& implName) const = 0;                      // 2nd
    virtual EffectKind GetKind(std::string const& classId, std::string const& implName) const = 0;            // 3rd
    virtual std::vector<std::string> GetClassIds() const = 0;                                                 // 4th
    virtual std::vector<std::string> GetImplNames(std::string const& classId) const = 0;                      // 5th
    virtual intrusive_ptr<IEffect> CreateEffect(std::string const& classId, std::string const& implName) = 0; // 6th
    virtual bool HasOneInputEffect(std::string const& classId, std::string const& implName) const = 0;        // 7th

    virtual void CreateOneInputEffect(intrusive_ptr<IOneInputEffectVideo>* result, std::string const& classId,
                                      std::string const& implName) = 0; // 8th

    virtual bool HasTwoInputEffect(std::string const& classId, std::string const& implName) const = 0; // 9th
    virtual bool HasVarInputEffect(std::string const& classId, std::string const& implName) const = 0; // 10th

    virtual void CreateVarInputEffect(intrusive_ptr<IVarInputEffectVideo>* result, std::string const& classId,
                                      std::string const& implName) = 0; // 11th

    virtual void CreateTwoInputEffect(intrusive_ptr<ITwoInputEffectVideo>* result, std::string const& classId,
                                      std::string const& implName) = 0; // 12th

    intrusive_ptr<IOneInputEffectVideo> CreateOneInputEffect(std::string const& classId, std::string const& implName) {
        intrusive_ptr<IOneInputEffectVideo> result;
        CreateOneInputEffect(&result, classId, implName);
        return result;
    }
    intrusive_ptr<ITwoInputEffectVideo> CreateTwoInputEffect(std::string const& classId, std::string const& implName) {
        intrusive_ptr<ITwoInputEffectVideo> result;
        CreateTwoInputEffect(&result, classId, implName);
        return result;
    }
    intrusive_ptr<IVarInputEffectVideo> CreateVarInputEffect(std::string const& classId, std::string const& implName) {
        intrusive_ptr<IVarInputEffectVideo> result;
        CreateVarInputEffect(&result, classId, implName);
        return result;
    }
};

using FactoryHandle = intrusive_ptr<IEffectFactory>;

} // namespace Velnor::Proc
