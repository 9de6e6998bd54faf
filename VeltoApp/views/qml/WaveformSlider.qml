import QtQuick
import Velto

// A recording's outline; a click plays from there, and so do the keyboard and a screen reader.
WaveformItem {
    id: wave

    required property RecordingsModel recordings
    property string device
    readonly property bool playing: file.length > 0 && recordings.playing === file
    // What a screen reader asks a slider for, s.
    property real value: 0
    readonly property real minimumValue: 0
    readonly property real maximumValue: seconds
    readonly property real stepSize: Math.max(1, Math.min(15, Math.round(seconds / 20)))

    // A recording that cannot be played is asked for as well: the answer says so.
    function playFrom(place: real) {
        recordings.play(file, device, place);
    }
    function moveTo(place: real) {
        value = Math.max(0, Math.min(seconds, place));
        if (playing)
            playFrom(value);
    }
    function timeText(time: real): string {
        const whole = Math.floor(time);
        return Math.floor(whole / 60) + ":" + String(whole % 60).padStart(2, "0");
    }
    function playOrStop() {
        if (playing)
            recordings.stopPlaying();
        else
            playFrom(value);
    }

    played: value
    color: Theme.edge
    playedColor: Theme.accent
    implicitHeight: Math.round(28 * Theme.textScale)
    activeFocusOnTab: true

    Accessible.role: Accessible.Slider
    Accessible.name: "Place in the recording"
    Accessible.description: file + ", " + timeText(value) + " of " + timeText(seconds)
    Accessible.focusable: true
    Accessible.ignored: !visible
    Accessible.onIncreaseAction: moveTo(value + stepSize)
    Accessible.onDecreaseAction: moveTo(value - stepSize)
    Accessible.onPressAction: playOrStop()

    onFileChanged: value = playing ? recordings.position : 0

    Connections {
        target: wave.recordings
        function onPlayingChanged() {
            if (wave.playing)
                wave.value = wave.recordings.position;
            else if (wave.value > wave.seconds - 0.2)
                wave.value = 0;
        }
    }
    Keys.onLeftPressed: moveTo(value - stepSize)
    Keys.onRightPressed: moveTo(value + stepSize)
    Keys.onReturnPressed: playOrStop()
    Keys.onEnterPressed: playOrStop()
    Keys.onSpacePressed: playOrStop()

    MouseArea {
        anchors.fill: parent
        cursorShape: Qt.PointingHandCursor
        onClicked: mouse => {
            wave.forceActiveFocus(Qt.MouseFocusReason);
            wave.playFrom(wave.seconds * mouse.x / wave.width);
        }
    }
    FocusRing {
        visible: wave.activeFocus
    }
}
