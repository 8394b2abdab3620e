#ifndef VORL_CORE_WHOLEAPPEND_H
#define VORL_CORE_WHOLEAPPEND_H

#include "vorl/Buffer.h"

namespace vorl {

/// Takes back, at the end of its scope, what was appended to a buffer since, unless told that it is complete:
/// half a record is worse than none.
class WholeAppend {
public:
    explicit WholeAppend(Buffer& out) : out_(out), before_(out.widx()) {}
    ~WholeAppend() {
        if (!complete_) {
            out_.truncate(before_);
        }
    }
    WholeAppend(const WholeAppend&) = delete;
    WholeAppend& operator=(const WholeAppend&) = delete;

    void complete() { complete_ = true; }

private:
    Buffer& out_;
    const unsigned int before_;
    bool complete_ = false;
};

}  // namespace vorl

#endif
