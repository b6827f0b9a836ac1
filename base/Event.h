// Event: the one way in which an object tells its owner that something happened, from the socket to the tray.
//
// An event is a slot with a single listener, its owner; an unbound event is raised into the void. It holds an
// object and a function, two words and no heap. The listener must outlive the event or Reset() it.
// A handler may destroy the object that carries the event: raising works on a copy of the slot.
#pragma once

#include <memory>
#include <utility>

template <typename... Args>
class Event {
 public:
    Event() = default;
    // An event belongs to the object that raises it and is bound there; a copy would have two owners.
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    // Bind<&Owner::member_Event>(owner): the handler is named after the member and its event.
    template <auto Method, typename Owner>
    void Bind(Owner& owner) {
        object_ = std::addressof(owner);
        call_ = [](void* object, Args... args) {
            (static_cast<Owner*>(object)->*Method)(std::forward<Args>(args)...);
        };
    }

    // Binds a callable that the caller keeps alive (tests and small programs do this with lambdas).
    template <typename Callable>
    void Bind(Callable& callable) {
        object_ = std::addressof(callable);
        call_ = [](void* object, Args... args) {
            (*static_cast<Callable*>(object))(std::forward<Args>(args)...);
        };
    }

    void Reset() {
        object_ = nullptr;
        call_ = nullptr;
    }

    explicit operator bool() const { return call_ != nullptr; }

    void operator()(Args... args) const {
        auto* const object = object_;
        auto* const call = call_;
        if (call != nullptr) call(object, std::forward<Args>(args)...);
    }

 private:
    void* object_ = nullptr;
    void (*call_)(void*, Args...) = nullptr;
};
