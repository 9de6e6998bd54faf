pragma Singleton
import QtQuick

// One palette for light and dark, one scale of spaces, one of types.
QtObject {
    id: theme

    property bool dark: false

    readonly property color window: dark ? "#17191d" : "#f6f7f9"
    readonly property color surface: dark ? "#202329" : "#ffffff"
    readonly property color outline: dark ? "#3a3f48" : "#d5d9e0"
    readonly property color text: dark ? "#f1f3f5" : "#1b1e23"
    readonly property color muted: dark ? "#a9b0bb" : "#5a6270"
    readonly property color accent: dark ? "#6ea8fe" : "#1f5fd0"
    readonly property color onAccent: dark ? "#0c1526" : "#ffffff"
    readonly property color good: dark ? "#5bd08a" : "#18794e"
    readonly property color warning: dark ? "#f0b84a" : "#8f5b00"
    readonly property color bad: dark ? "#ff8a80" : "#b3261e"
    readonly property color focus: accent

    readonly property int space1: 4
    readonly property int space2: 8
    readonly property int space3: 12
    readonly property int space4: 16
    readonly property int space5: 24
    readonly property int space6: 32
    readonly property int radius: 10

    readonly property int textSmall: 12
    readonly property int textBody: 14
    readonly property int textTitle: 18
    readonly property int textLarge: 26
}
