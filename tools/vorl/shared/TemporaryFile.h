#ifndef VORL_TOOL_SHARED_TEMPORARYFILE_H
#define VORL_TOOL_SHARED_TEMPORARYFILE_H

#include "shared/Descriptor.h"
#include "vorl/bytes.h"

#include <memory>
#include <string>

#include <sys/types.h>
#include <csignal>

namespace vorl::tool {

/// A new file beside the one that it is going to replace: either it is written whole and takes the name of
/// its target, or it is removed and the target stays what it was.
///
/// Signals, most of which would end the process, wait for as long as it exists. Failures are thrown as
/// std::system_error.
class TemporaryFile {
public:
    /// Creates a file of mode 0600 and a random name in the folder of `target`.
    explicit TemporaryFile(const std::string& target);
    /// Removes the file, unless it has taken the name of its target.
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void write(const bytes& data);
    void setMode(mode_t mode);
    /// Puts the file in the place of its target, once all of it is on the disk.
    void replaceTarget();
    /// The same, but so that takeBack() can undo it: what was there before stays on the disk until the object
    /// goes.
    void replaceTargetForNow();
    /// Puts back what was there before replaceTargetForNow(), be it nothing.
    void takeBack();

private:
    // Held from before the file exists until after it is gone.
    class HeldSignals {
    public:
        HeldSignals();
        ~HeldSignals();
        HeldSignals(const HeldSignals&) = delete;
        HeldSignals& operator=(const HeldSignals&) = delete;

    private:
        sigset_t before_;
    };

    const HeldSignals signals_;
    const std::string target_;
    std::string path_;
    // Another name of the file that was replaced for now.
    std::string kept_;
    Descriptor file_;
};

}  // namespace vorl::tool

#endif
