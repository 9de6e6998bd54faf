#include "VeltoPlatform/linux/AtspiRoles.h"

#include <array>
#include <cstddef>

namespace velto {
namespace {

constexpr const char* kUnknown = "AXUnknown";

// By number, from "invalid" (0) to "push button menu" (129).
constexpr std::array kNames{
    kUnknown,              // invalid
    "AXStaticText",        // accelerator label
    "AXSheet",             // alert
    "AXImage",             // animation
    "AXImage",             // arrow
    "AXGroup",             // calendar
    "AXImage",             // canvas
    "AXCheckBox",          // check box
    "AXMenuItem",          // check menu item
    "AXColorWell",         // color chooser
    "AXButton",            // column header
    "AXComboBox",          // combo box
    "AXDateField",         // date editor
    "AXImage",             // desktop icon
    "AXWindow",            // desktop frame
    "AXSlider",            // dial
    "AXWindow",            // dialog
    "AXGroup",             // directory pane
    "AXImage",             // drawing area
    "AXWindow",            // file chooser
    "AXGroup",             // filler
    kUnknown,              // focus traversable
    "AXWindow",            // font chooser
    "AXWindow",            // frame
    "AXGroup",             // glass pane
    "AXGroup",             // HTML container
    "AXImage",             // icon
    "AXImage",             // image
    "AXWindow",            // internal frame
    "AXStaticText",        // label
    "AXGroup",             // layered pane
    "AXList",              // list
    "AXGroup",             // list item
    "AXMenu",              // menu
    "AXMenuBar",           // menu bar
    "AXMenuItem",          // menu item
    "AXGroup",             // option pane
    "AXRadioButton",       // page tab
    "AXTabGroup",          // page tab list
    "AXGroup",             // panel
    "AXTextField",         // password text
    "AXMenu",              // popup menu
    "AXProgressIndicator", // progress bar
    "AXButton",            // push button
    "AXRadioButton",       // radio button
    "AXMenuItem",          // radio menu item
    "AXGroup",             // root pane
    "AXCell",              // row header
    "AXScrollBar",         // scroll bar
    "AXScrollArea",        // scroll pane
    "AXSplitter",          // separator
    "AXSlider",            // slider
    "AXIncrementor",       // spin button
    "AXSplitGroup",        // split pane
    "AXGroup",             // status bar
    "AXTable",             // table
    "AXCell",              // table cell
    "AXButton",            // table column header
    "AXCell",              // table row header
    "AXMenuItem",          // tear-off menu item
    "AXTextArea",          // terminal
    "AXTextField",         // text
    "AXCheckBox",          // toggle button
    "AXToolbar",           // tool bar
    "AXHelpTag",           // tool tip
    "AXOutline",           // tree
    "AXOutline",           // tree table
    kUnknown,              // unknown
    "AXScrollArea",        // viewport
    "AXWindow",            // window
    kUnknown,              // extended
    "AXGroup",             // header
    "AXGroup",             // footer
    "AXStaticText",        // paragraph
    "AXRuler",             // ruler
    "AXApplication",       // application
    "AXTextField",         // autocomplete
    "AXTextField",         // edit bar
    "AXGroup",             // embedded
    "AXTextField",         // entry
    "AXImage",             // chart
    "AXStaticText",        // caption
    "AXWebArea",           // document frame
    "AXHeading",           // heading
    "AXGroup",             // page
    "AXGroup",             // section
    kUnknown,              // redundant object
    "AXGroup",             // form
    "AXLink",              // link
    "AXWindow",            // input method window
    "AXRow",               // table row
    "AXRow",               // tree item
    "AXWebArea",           // spreadsheet
    "AXWebArea",           // presentation
    "AXTextArea",          // text document
    "AXWebArea",           // web document
    "AXWebArea",           // email document
    "AXGroup",             // comment
    "AXList",              // list box
    "AXGroup",             // grouping
    "AXImage",             // image map
    "AXGenericElement",    // notification
    "AXGenericElement",    // info bar
    "AXLevelIndicator",    // level bar
    "AXGroup",             // title bar
    "AXGroup",             // block quote
    "AXGroup",             // audio
    "AXGroup",             // video
    "AXGroup",             // definition
    "AXGroup",             // article
    "AXGroup",             // landmark
    "AXGroup",             // log
    "AXGroup",             // marquee
    "AXGroup",             // math
    "AXLevelIndicator",    // rating
    "AXGenericElement",    // timer
    "AXStaticText",        // static
    "AXGroup",             // fraction
    "AXGroup",             // root
    "AXStaticText",        // subscript
    "AXStaticText",        // superscript
    "AXList",              // description list
    "AXStaticText",        // description term
    "AXStaticText",        // description value
    "AXGroup",             // footnote
    "AXGroup",             // deleted content
    "AXGroup",             // inserted content
    "AXGroup",             // mark
    "AXGroup",             // suggestion
    "AXMenuButton",        // push button menu
};
static_assert(kNames.size() == 130);

} // namespace

const char* accessibilityRole(AtspiRole role, bool multiLine) {
    if (role == AtspiRole::text && multiLine)
        return "AXTextArea";
    const auto number = static_cast<std::size_t>(role);
    return number < kNames.size() ? kNames[number] : kUnknown;
}

AtspiContent contentOf(AtspiRole role) {
    switch (static_cast<std::uint32_t>(role)) {
    case 10: // column header
    case 43: // push button
    case 57: // table column header
        return AtspiContent::button;
    case 1:   // accelerator label
    case 29:  // label
    case 73:  // paragraph
    case 81:  // caption
    case 116: // static
    case 119: // subscript
    case 120: // superscript
    case 122: // description term
    case 123: // description value
        return AtspiContent::label;
    case 12: // date editor
    case 60: // terminal
    case 61: // text
    case 76: // autocomplete
    case 77: // edit bar
    case 79: // entry
    case 94: // text document
        return AtspiContent::edited;
    case 15:  // dial
    case 42:  // progress bar
    case 48:  // scroll bar
    case 51:  // slider
    case 52:  // spin button
    case 103: // level bar
    case 114: // rating
        return AtspiContent::counted;
    default:
        return AtspiContent::other;
    }
}

} // namespace velto
