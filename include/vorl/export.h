#ifndef VORL_EXPORT_H
#define VORL_EXPORT_H

/// Marks what the shared object shows; everything else in it is hidden.
#define VORL_API __attribute__((visibility("default")))

#endif
