// Light or dark, as the desktop says, where Qt does not know the desktop's own palette.
#pragma once

#include "VeltoQt/DesktopScheme.h"

#include <QPalette>

namespace velto::phone {

/// The palette stays where the desktop's theme is dark by itself. Qt's main thread.
class DesktopColours {
  public:
    DesktopColours();
    DesktopColours(const DesktopColours&) = delete;
    DesktopColours& operator=(const DesktopColours&) = delete;

  private:
    QPalette own_;
    DesktopScheme scheme_;
};

} // namespace velto::phone
