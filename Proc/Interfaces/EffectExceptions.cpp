#include "Proc/Interfaces/EffectExceptions.h"

template void Velnor::Details::ThrowDescribed(Velnor::Proc::EffectException, std::string const&,
                                              boost::source_location const&);
template void Velnor::Details::ThrowDescribed(Velnor::Proc::FilterException, std::string const&,
                                              boost::source_location const&);
