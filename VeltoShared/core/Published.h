// Published values: observers are told before each change. Main thread only.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace velto {

/// Ends an observation when destroyed; outliving the observed value is fine.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    ~Subscription() { reset(); }

    void reset() {
        if (auto cancel = std::exchange(cancel_, nullptr))
            cancel();
    }

  private:
    std::function<void()> cancel_;
};

/// A list of observers that may grow or shrink while it is being told.
template <class... Arguments>
class ObserverList {
  public:
    Subscription add(std::function<void(Arguments...)> observer) {
        const auto key = state_->nextKey++;
        state_->observers.emplace(key, std::make_shared<Observer>(std::move(observer)));
        return Subscription([weak = std::weak_ptr(state_), key] {
            if (auto state = weak.lock())
                state->observers.erase(key);
        });
    }

    void tell(Arguments... arguments) const {
        if (state_->observers.empty())
            return;
        const auto state = state_;
        const auto snapshot = state->observers;
        for (const auto& [key, observer] : snapshot)
            if (state->observers.contains(key))
                (*observer)(arguments...);
    }

    bool empty() const { return state_->observers.empty(); }

  private:
    using Observer = std::function<void(Arguments...)>;
    struct State {
        std::map<unsigned long, std::shared_ptr<Observer>> observers;
        unsigned long nextKey = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// An object with one change signal, fired before any of its published values changes.
class ObservableObject {
  public:
    ObservableObject() = default;
    ObservableObject(const ObservableObject&) = delete;
    ObservableObject& operator=(const ObservableObject&) = delete;

    Subscription observe(std::function<void()> willChange) { return willChange_.add(std::move(willChange)); }

  private:
    template <class>
    friend class Published;
    ObserverList<> willChange_;
};

/// One published value of an observable object. Observers receive the value that is about to be set, while
/// `get()` still answers the old one.
template <class T>
class Published {
  public:
    explicit Published(ObservableObject& owner, T initial = {}) : owner_(owner), value_(std::move(initial)) {}

    const T& get() const { return value_; }
    const T& operator()() const { return value_; }

    void set(T next) {
        owner_.willChange_.tell();
        observers_.tell(next);
        value_ = std::move(next);
    }

    /// Applies `change` to a copy and sets it; in place while nobody observes this value.
    template <class Change>
    void mutate(Change&& change) {
        if (observers_.empty()) {
            owner_.willChange_.tell();
            change(value_);
            return;
        }
        T next = value_;
        change(next);
        set(std::move(next));
    }

    Subscription observe(std::function<void(const T&)> observer) {
        return observers_.add(std::move(observer));
    }

  private:
    ObservableObject& owner_;
    ObserverList<const T&> observers_;
    T value_;
};

} // namespace velto
