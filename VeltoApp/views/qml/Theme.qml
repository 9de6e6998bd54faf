pragma Singleton
import QtQuick
import Velto

// One palette for light and dark, one scale of spaces, one of types. Texts have a contrast of 4.5 to 1 or more
// on every ground that they stand on.
QtObject {
    id: theme

    readonly property bool dark: Appearance.dark

    readonly property color window: dark ? "#15171b" : "#f4f5f8"
    readonly property color surface: dark ? "#1f2228" : "#ffffff"
    // Of what lies in a card: fields, quiet buttons, the other side's bubbles.
    readonly property color sunken: dark ? "#292d35" : "#f1f3f6"
    readonly property color outline: dark ? "#3a3f49" : "#d9dde4"
    // Of fields and toggles, which are to be seen as such: 3 to 1.
    readonly property color edge: dark ? "#737b89" : "#868e9c"
    readonly property color text: dark ? "#f1f3f5" : "#1a1d22"
    readonly property color muted: dark ? "#a9b1bd" : "#58606d"
    readonly property color accent: dark ? "#7aaeff" : "#1d5bd0"
    readonly property color accentInk: dark ? "#0b1424" : "#ffffff"
    readonly property color accentSoft: dark ? "#22324c" : "#e6eefc"
    readonly property color good: dark ? "#5bd08a" : "#17734a"
    readonly property color goodSoft: dark ? "#1b3527" : "#e4f4ea"
    readonly property color warning: dark ? "#f0b84a" : "#855300"
    readonly property color warningSoft: dark ? "#3a2f18" : "#fdf1d9"
    readonly property color bad: dark ? "#ff8a80" : "#b3261e"
    readonly property color badSoft: dark ? "#402321" : "#fce8e6"
    readonly property color badInk: dark ? "#2a0805" : "#ffffff"
    readonly property color focus: accent
    // Laid over a control that is hovered or pressed.
    readonly property color hover: dark ? "#14ffffff" : "#0d000000"
    readonly property color press: dark ? "#26ffffff" : "#1c000000"

    readonly property int space1: 4
    readonly property int space2: 8
    readonly property int space3: 12
    readonly property int space4: 16
    readonly property int space5: 24
    readonly property int space6: 32
    readonly property int radius: 12
    readonly property int radiusSmall: 8
    readonly property int focusWidth: 2
    readonly property int controlHeight: Math.round(36 * textScale)

    // Follows a desktop whose letters are larger than usual.
    readonly property real textScale: Math.max(1, Application.font.pixelSize / 15)
    readonly property int textSmall: Math.round(12 * textScale)
    readonly property int textBody: Math.round(14 * textScale)
    readonly property int textTitle: Math.round(16 * textScale)
    readonly property int textLarge: Math.round(24 * textScale)
}
