#include "VeltoApp/views/models/Reveal.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Workspace.h"
#include "VeltoShared/core/Executors.h"

#include <utility>

namespace velto {

void reveal(std::filesystem::path file) {
    Blocking::post([file = std::move(file)] {
        if (!platform().workspace->revealFile(file))
            Helper::log("reveal: nothing could show " + file.string());
    });
}

} // namespace velto
