// The simulated desktop: one lock for all its trees, taken for single steps and never while calling out.
#include "VeltoPlatform/simulated/SimulatedDesktop.h"

#include <algorithm>
#include <array>

namespace velto {
namespace {

constexpr std::array kAttributes{Attribute::role,  Attribute::title,    Attribute::description,
                                 Attribute::value, Attribute::position, Attribute::children};

AttributeValue& slot(ElementAttributes& attributes, Attribute attribute) {
    switch (attribute) {
    case Attribute::role:
        return attributes.role;
    case Attribute::title:
        return attributes.title;
    case Attribute::description:
        return attributes.description;
    case Attribute::value:
        return attributes.value;
    case Attribute::position:
        return attributes.position;
    case Attribute::children:
        break;
    }
    return attributes.children;
}

AttributeValue textOrNone(std::string text) {
    if (text.empty())
        return {};
    return text;
}

} // namespace

SimulatedElementRef SimulatedElement::add(ElementSpec spec) {
    auto child = SimulatedElementRef(new SimulatedElement(shared_));
    child->attributes_.role = textOrNone(std::move(spec.role));
    child->attributes_.title = textOrNone(std::move(spec.title));
    child->attributes_.description = textOrNone(std::move(spec.description));
    child->attributes_.value = std::move(spec.value);
    if (spec.position)
        child->attributes_.position = *spec.position;
    child->parent_ = weak_from_this();
    const std::scoped_lock lock(shared_->mutex);
    children_.push_back(child);
    return child;
}

SimulatedElementRef SimulatedElement::addButton(std::string description, std::function<void()> pressed) {
    auto button = add({.role = "AXButton", .description = std::move(description)});
    button->onPress(std::move(pressed));
    return button;
}

SimulatedElementRef SimulatedElement::addText(std::string value) {
    return add({.role = "AXStaticText", .value = std::move(value)});
}

SimulatedElementRef SimulatedElement::addChain(int levels, const std::string& role) {
    auto lowest = shared_from_this();
    for (int level = 0; level < levels; ++level)
        lowest = lowest->add({.role = role});
    return lowest;
}

void SimulatedElement::set(Attribute attribute, AttributeValue value) {
    const std::scoped_lock lock(shared_->mutex);
    if (attribute == Attribute::children)
        childrenSeen_ = std::move(value);
    else
        slot(attributes_, attribute) = std::move(value);
}

void SimulatedElement::onPress(std::function<void()> pressed) {
    const std::scoped_lock lock(shared_->mutex);
    pressed_ = std::move(pressed);
}

void SimulatedElement::remove() {
    const std::scoped_lock lock(shared_->mutex);
    if (const auto parent = parent_.lock())
        std::erase_if(parent->children_, [this](const auto& child) { return child.get() == this; });
    parent_.reset();
}

void SimulatedElement::clear() {
    const std::scoped_lock lock(shared_->mutex);
    for (const auto& child : children_)
        child->parent_.reset();
    children_.clear();
    childrenSeen_.reset();
}

void SimulatedElement::failRead(Attribute attribute, bool fails) {
    const std::scoped_lock lock(shared_->mutex);
    const auto bit = static_cast<unsigned>(attribute);
    failingReads_ = fails ? failingReads_ | bit : failingReads_ & ~bit;
}

void SimulatedElement::failPress(bool fails) {
    const std::scoped_lock lock(shared_->mutex);
    failingPress_ = fails;
}

int SimulatedElement::presses() const {
    const std::scoped_lock lock(shared_->mutex);
    return presses_;
}

int SimulatedElement::pressAttempts() const {
    const std::scoped_lock lock(shared_->mutex);
    return pressAttempts_;
}

bool SimulatedElement::attached() const {
    if (root_)
        return true;
    for (auto above = parent_.lock(); above; above = above->parent_.lock())
        if (above->root_)
            return true;
    return false;
}

AttributeValue SimulatedElement::read(Attribute attribute) const {
    if ((failingReads_ & static_cast<unsigned>(attribute)) != 0)
        return {};
    if (attribute != Attribute::children)
        return slot(const_cast<ElementAttributes&>(attributes_), attribute);
    if (childrenSeen_)
        return *childrenSeen_;
    return std::vector<ElementRef>(children_.begin(), children_.end());
}

SimulatedDesktop::~SimulatedDesktop() {
    while (!applications_.empty())
        quit(std::string(applications_.front().running.bundleID));
}

SimulatedElementRef SimulatedDesktop::launch(std::string bundleID, pid_t pid) {
    auto root = SimulatedElementRef(new SimulatedElement(shared_));
    root->attributes_.role = "AXApplication";
    root->root_ = true;
    const std::scoped_lock lock(shared_->mutex);
    applications_.push_back({{std::move(bundleID), pid}, root});
    return root;
}

SimulatedElementRef SimulatedDesktop::find(std::string_view bundleID) const {
    const std::scoped_lock lock(shared_->mutex);
    for (const auto& application : applications_)
        if (application.running.bundleID == bundleID)
            return application.root;
    return nullptr;
}

void SimulatedDesktop::quit(std::string_view bundleID) {
    const auto root = find(bundleID);
    if (!root)
        return;
    root->clear(); // also breaks cycles that `set` of children has made at the root
    const std::scoped_lock lock(shared_->mutex);
    root->root_ = false;
    std::erase_if(applications_, [&](const auto& application) { return application.root == root; });
}

void SimulatedDesktop::setTrusted(bool trusted, std::string whyNot) {
    const std::scoped_lock lock(shared_->mutex);
    trusted_ = trusted;
    whyNotTrusted_ = trusted ? std::string() : std::move(whyNot);
}

int SimulatedDesktop::promptCount() const {
    const std::scoped_lock lock(shared_->mutex);
    return prompts_;
}

std::vector<std::string> SimulatedDesktop::openedURLs() const {
    const std::scoped_lock lock(shared_->mutex);
    return openedURLs_;
}

void SimulatedDesktop::onOpenURL(std::function<bool(const std::string&)> handler) {
    const std::scoped_lock lock(shared_->mutex);
    urlHandler_ = std::move(handler);
}

std::vector<std::filesystem::path> SimulatedDesktop::revealedFiles() const {
    const std::scoped_lock lock(shared_->mutex);
    return revealedFiles_;
}

void SimulatedDesktop::beforeRead(std::function<void()> hook) {
    const std::scoped_lock lock(shared_->mutex);
    beforeRead_ = std::move(hook);
}

long SimulatedDesktop::elementReads() const {
    const std::scoped_lock lock(shared_->mutex);
    return elementReads_;
}

long SimulatedDesktop::attributeReads() const {
    const std::scoped_lock lock(shared_->mutex);
    return attributeReads_;
}

std::size_t SimulatedDesktop::largestBatch() const {
    const std::scoped_lock lock(shared_->mutex);
    return largestBatch_;
}

bool SimulatedDesktop::trusted() {
    const std::scoped_lock lock(shared_->mutex);
    return trusted_;
}

std::string SimulatedDesktop::whyNotTrusted() {
    const std::scoped_lock lock(shared_->mutex);
    return whyNotTrusted_;
}

void SimulatedDesktop::promptForTrust() {
    const std::scoped_lock lock(shared_->mutex);
    ++prompts_;
}

ElementRef SimulatedDesktop::application(pid_t pid) {
    const std::scoped_lock lock(shared_->mutex);
    for (const auto& application : applications_)
        if (application.running.pid == pid)
            return application.root;
    // Like the platform's: an element is answered for any process, and cannot be read.
    return ElementRef(new SimulatedElement(shared_));
}

std::vector<ElementAttributes> SimulatedDesktop::read(std::span<const Request> requests) {
    std::function<void()> hook;
    {
        const std::scoped_lock lock(shared_->mutex);
        hook = beforeRead_;
        largestBatch_ = std::max(largestBatch_, requests.size());
    }
    std::vector<ElementAttributes> answers;
    answers.reserve(requests.size());
    for (const auto& request : requests) {
        if (hook)
            hook();
        auto& answer = answers.emplace_back();
        const auto* element = dynamic_cast<const SimulatedElement*>(request.element.get());
        const std::scoped_lock lock(shared_->mutex);
        ++elementReads_;
        for (const auto attribute : kAttributes) {
            if (!request.attributes.contains(attribute))
                continue;
            ++attributeReads_;
            if (trusted_ && element && element->attached())
                slot(answer, attribute) = element->read(attribute);
        }
    }
    return answers;
}

bool SimulatedDesktop::press(const ElementRef& element) {
    auto pressed =
        std::const_pointer_cast<SimulatedElement>(std::dynamic_pointer_cast<const SimulatedElement>(element));
    if (!pressed)
        return false;
    std::function<void()> handler;
    {
        const std::scoped_lock lock(shared_->mutex);
        ++pressed->pressAttempts_;
        if (!trusted_ || !pressed->attached() || pressed->failingPress_)
            return false;
        ++pressed->presses_;
        handler = pressed->pressed_;
    }
    if (handler)
        handler();
    return true;
}

std::vector<RunningApplication> SimulatedDesktop::runningApplications() {
    const std::scoped_lock lock(shared_->mutex);
    std::vector<RunningApplication> running;
    running.reserve(applications_.size());
    for (const auto& application : applications_)
        running.push_back(application.running);
    return running;
}

bool SimulatedDesktop::openURL(const std::string& url) {
    std::function<bool(const std::string&)> handler;
    {
        const std::scoped_lock lock(shared_->mutex);
        openedURLs_.push_back(url);
        handler = urlHandler_;
    }
    return handler && handler(url);
}

std::optional<std::string> SimulatedDesktop::handlerOf(const std::string&) {
    const std::scoped_lock lock(shared_->mutex);
    return urlHandler_ ? std::optional<std::string>("/simulated/phone") : std::nullopt;
}

bool SimulatedDesktop::revealFile(const std::filesystem::path& path) {
    const std::scoped_lock lock(shared_->mutex);
    revealedFiles_.push_back(path);
    return true;
}

} // namespace velto
