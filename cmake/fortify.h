// Included before each source: only here it is known whether the compiler optimises, without which the C
// library checks nothing and warns. What a distribution has chosen for itself stays.
#if defined(__OPTIMIZE__) && !defined(_FORTIFY_SOURCE)
#define _FORTIFY_SOURCE 2
#endif
