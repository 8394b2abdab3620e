#include "vorl/Env.h"

#include <map>

namespace vorl {

namespace {

// Behind a function, so that an application's own static objects may already set a switch.
std::map<Component, bool>& insComponents() {
    static std::map<Component, bool> switches;
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

Env::Env() : fmtSeparator_(":"), fmtLevel_(1), fmtIndentSize_(4), fmtWidth_(80) {}

}  // namespace vorl
