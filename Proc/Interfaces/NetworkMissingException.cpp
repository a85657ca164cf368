#include "Proc/Interfaces/NetworkMissingException.h"

template void Velnor::Details::ThrowDescribed(Velnor::Proc::NetworkMissingException, std::string const&,
                                              boost::source_location const&);
