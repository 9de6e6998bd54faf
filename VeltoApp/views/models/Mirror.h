// A published value as a property that windows can bind to.
#pragma once

#include "VeltoShared/core/Published.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

/// What observers are told is about to be set; whoever is told here reads the new value. Main thread.
template <class T>
class Mirror {
  public:
    /// `source` has `get` and `observe`, as `Published` and `Setting` have; `changed` emits the property's
    /// signal.
    template <class Source>
    Mirror(Source& source, std::function<void()> changed)
        : value_(source.get()), changed_(std::move(changed)),
          subscription_(source.observe([this](const T& next) {
              if (next == value_)
                  return;
              value_ = next;
              changed_();
          })) {}
    Mirror(const Mirror&) = delete;
    Mirror& operator=(const Mirror&) = delete;

    const T& operator()() const { return value_; }

  private:
    T value_;
    std::function<void()> changed_;
    Subscription subscription_;
};

inline QString shown(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline QStringList shown(const std::vector<std::string>& texts) {
    QStringList list;
    list.reserve(static_cast<qsizetype>(texts.size()));
    for (const auto& text : texts)
        list.append(shown(text));
    return list;
}

} // namespace velto
