#ifndef TARVIK_EXPORT_H
#define TARVIK_EXPORT_H

/// Marks what the platform shows through the shared object it is linked into.
#define TARVIK_API __attribute__((visibility("default")))

#endif
