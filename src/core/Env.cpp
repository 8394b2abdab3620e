#include "vorl/Env.h"

#include <map>

namespace vorl {

namespace {

// Made on first use and never destroyed, so that an application's own static objects may use it at both ends
// of the process.
std::map<Component, bool>& insComponents() {
    static auto& switches = *new std::map<Component, bool>;
    return switches;
}

}  // namespace

Env* Env::instance() {
    static Env* const instance = new Env;
    return instance;
}

void Env::setInstrumentation(Component c, bool on) {
    insComponents()[c] = on;
}

bool Env::getInstrumentation(Component c) {
    const auto& switches = insComponents();
    const auto entry = switches.find(c);
    return entry != switches.end() && entry->second;
}

}  // namespace vorl
