// Holds the platform in the installed library against the installed checks.

#include <vorl/Random.h>
#include <vorl/testkit/Conformance.h>

#include <iostream>

int main() {
    vorl::Random::init_ = true;
    const vorl::testkit::Platform platform = vorl::testkit::linkedPlatform();
    std::size_t held = 0;
    for (const vorl::testkit::Check& check : vorl::testkit::checks()) {
        const vorl::testkit::Finding finding = vorl::testkit::run(check, platform);
        if (finding.outcome == vorl::testkit::Finding::FAILS) {
            std::cerr << check.name << ": " << finding.sentence << '\n';
            return 1;
        }
        held += finding.outcome == vorl::testkit::Finding::HOLDS ? 1U : 0U;
    }
    std::cout << held << " checks of the platform hold\n";
    return held > 0 ? 0 : 1;
}
