import QtQuick
import Velto

// One view in the place of others. It is made anew each time that it is shown: it looks at what it shows then,
// and nothing that was typed into it is kept.
Loader {
    id: loader

    required property AppModel app
    // The name of its file; empty for none.
    required property string view

    function load() {
        setSource(view, view.length > 0 ? {
            app: app
        } : {});
    }

    onViewChanged: load()
    Component.onCompleted: load()
}
