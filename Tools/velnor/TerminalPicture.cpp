#include "Tools/velnor/TerminalPicture.h"

#include "Tools/velnor/Conversion.h"

#include <chafa.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <memory>

namespace Velnor::Tool {
namespace {

template <class Type, void (*Release)(Type*)>
struct Releaser {
    void operator()(Type* object) const { Release(object); }
};
template <class Type, void (*Release)(Type*)>
using Owned = std::unique_ptr<Type, Releaser<Type, Release>>;
using Terminal = Owned<ChafaTermInfo, chafa_term_info_unref>;
using Config = Owned<ChafaCanvasConfig, chafa_canvas_config_unref>;
using Symbols = Owned<ChafaSymbolMap, chafa_symbol_map_unref>;
using Canvas = Owned<ChafaCanvas, chafa_canvas_unref>;

/// With the sequences of all terminals where its own are not known.
Terminal DetectTerminal() {
    std::unique_ptr<char*, decltype(&g_strfreev)> const environment(g_get_environ(), g_strfreev);
    ChafaTermDb* const known = chafa_term_db_get_default();
    Terminal terminal(chafa_term_db_detect(known, environment.get()));
    return terminal;
}

bool Has(Terminal const& terminal, ChafaTermSeq sequence) {
    return chafa_term_info_have_seq(terminal.get(), sequence) != FALSE;
}

ChafaPixelMode ChooseMode(Terminal const& terminal, TerminalForm form) {
    if (form == TerminalForm::Kitty) return CHAFA_PIXEL_MODE_KITTY;
    if (form == TerminalForm::Sixel) return CHAFA_PIXEL_MODE_SIXELS;
    if (form == TerminalForm::Blocks) return CHAFA_PIXEL_MODE_SYMBOLS;
    if (Has(terminal, CHAFA_TERM_SEQ_BEGIN_KITTY_IMMEDIATE_IMAGE_V1)) return CHAFA_PIXEL_MODE_KITTY;
    return Has(terminal, CHAFA_TERM_SEQ_BEGIN_SIXELS) ? CHAFA_PIXEL_MODE_SIXELS : CHAFA_PIXEL_MODE_SYMBOLS;
}

/// Pixels of a cell, by which a sixel picture gets its size.
void SetCell(ChafaCanvasConfig* config) {
    winsize size{};
    bool const isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_xpixel > 0 && size.ws_col > 0 &&
                         size.ws_ypixel > 0 && size.ws_row > 0;
    chafa_canvas_config_set_cell_geometry(config, isKnown ? size.ws_xpixel / size.ws_col : 10,
                                          isKnown ? size.ws_ypixel / size.ws_row : 20);
}

Config MakeConfig(Proc::FrameFormat const& frame, TerminalSize const& size, ChafaPixelMode mode) {
    constexpr float SHAPE_OF_CELL = 0.5F;
    gint columns = size.columns;
    gint rows = size.rows;
    chafa_calc_canvas_geometry(static_cast<gint>(frame.width), static_cast<gint>(frame.height), &columns, &rows,
                               SHAPE_OF_CELL, TRUE, FALSE);
    Config config(chafa_canvas_config_new());
    Symbols const symbols(chafa_symbol_map_new());
    for (ChafaSymbolTags const tags : {CHAFA_SYMBOL_TAG_BLOCK, CHAFA_SYMBOL_TAG_SPACE})
        chafa_symbol_map_add_by_tags(symbols.get(), tags);
    chafa_canvas_config_set_geometry(config.get(), columns, rows);
    chafa_canvas_config_set_symbol_map(config.get(), symbols.get());
    chafa_canvas_config_set_pixel_mode(config.get(), mode);
    chafa_canvas_config_set_canvas_mode(config.get(), CHAFA_CANVAS_MODE_TRUECOLOR);
    SetCell(config.get());
    return config;
}

} // namespace

TerminalSize GetTerminalSize() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row < 2) return {};
    return {size.ws_col, size.ws_row - 1}; // The prompt stands below.
}

std::string DrawForTerminal(Proc::DataHandle picture, TerminalSize const& size, TerminalForm form,
                            Proc::IEffectFactory& factory) {
    Convert(picture, {PixFmt::RGBA}, factory);
    Proc::FrameFormat const frame = picture->GetFrameFormat();
    Proc::ConstPlane const plane = Proc::AsVideo(Proc::ConstDataHandle(picture)).GetPlane(0);
    Terminal const terminal = DetectTerminal();
    ChafaPixelMode const mode = ChooseMode(terminal, form);
    ChafaTermInfo* const all = chafa_term_db_get_fallback_info(chafa_term_db_get_default());
    chafa_term_info_supplement(terminal.get(), all);
    chafa_term_info_unref(all);
    Canvas const canvas(chafa_canvas_new(MakeConfig(frame, size, mode).get()));
    chafa_canvas_draw_all_pixels(canvas.get(), CHAFA_PIXEL_RGBA8_UNASSOCIATED, plane.GetRow(0),
                                 static_cast<gint>(frame.width), static_cast<gint>(frame.height),
                                 static_cast<gint>(plane.GetStride()));
    GString* const text = chafa_canvas_print(canvas.get(), terminal.get());
    std::string drawn(text->str, text->len);
    g_string_free(text, TRUE);
    return drawn + "\n";
}

} // namespace Velnor::Tool
