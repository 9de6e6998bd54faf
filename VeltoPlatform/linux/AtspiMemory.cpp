#include "VeltoPlatform/linux/AtspiMemory.h"

#include <array>
#include <utility>

namespace velto {
namespace {

constexpr std::size_t kElements = 512;
constexpr std::size_t kLongestText = 4096;
constexpr std::size_t kMostChildren = 512;

using Part = std::pair<Attribute, AttributeValue ElementAttributes::*>;
constexpr std::array kParts{
    Part{Attribute::role, &ElementAttributes::role},
    Part{Attribute::title, &ElementAttributes::title},
    Part{Attribute::description, &ElementAttributes::description},
    Part{Attribute::value, &ElementAttributes::value},
    Part{Attribute::position, &ElementAttributes::position},
    Part{Attribute::children, &ElementAttributes::children},
};

bool isSmall(const AttributeValue& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        return text->size() <= kLongestText;
    if (const auto* children = std::get_if<std::vector<ElementRef>>(&value))
        return children->size() <= kMostChildren;
    return true;
}

} // namespace

void AtspiMemory::remember(const AtspiElement& element, AttributeSet asked,
                           const ElementAttributes& answers) {
    const std::scoped_lock lock(mutex_);
    auto& [young, old] = programs_[element.peer->name];
    auto kept = young.find(element.path);
    if (kept == young.end()) {
        if (young.size() == kElements) {
            old = std::move(young);
            young = {};
        }
        ElementAttributes before;
        if (auto known = old.extract(element.path))
            before = std::move(known.mapped());
        kept = young.emplace(element.path, std::move(before)).first;
    }
    for (const auto& [attribute, part] : kParts)
        if (asked.contains(attribute))
            kept->second.*part = isSmall(answers.*part) ? answers.*part : AttributeValue{};
}

void AtspiMemory::recall(const AtspiElement& element, AttributeSet asked, ElementAttributes& answers) const {
    const std::scoped_lock lock(mutex_);
    const auto program = programs_.find(element.peer->name);
    if (program == programs_.end())
        return;
    for (const auto* generation : {&program->second.young, &program->second.old}) {
        const auto kept = generation->find(element.path);
        if (kept == generation->end())
            continue;
        for (const auto& [attribute, part] : kParts)
            if (asked.contains(attribute) && std::holds_alternative<std::monostate>(answers.*part))
                answers.*part = kept->second.*part;
        return;
    }
}

void AtspiMemory::forget(const std::string& peer) {
    const std::scoped_lock lock(mutex_);
    programs_.erase(peer);
}

std::vector<std::string> AtspiMemory::peers() const {
    const std::scoped_lock lock(mutex_);
    std::vector<std::string> names;
    names.reserve(programs_.size());
    for (const auto& [name, elements] : programs_)
        names.push_back(name);
    return names;
}

} // namespace velto
