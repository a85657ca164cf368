#pragma once

#include "Proc/Interfaces/IEffectFactory.h"

#include <cstdint>
#include <string>

namespace Velnor::Tool {

/// How a terminal is made to show a picture.
enum class TerminalForm : std::uint8_t { Auto, Blocks, Sixel, Kitty };

/// Cells of a terminal.
struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

/// Of the terminal on standard output; of 80 x 24 where it is none.
TerminalSize GetTerminalSize();

/// The picture as text for a terminal, no larger than the size, in its shape. Auto is the best form that the
/// environment says the terminal has, and blocks of colour otherwise.
std::string DrawForTerminal(Proc::DataHandle picture, TerminalSize const& size, TerminalForm form,
                            Proc::IEffectFactory& factory);

} // namespace Velnor::Tool
