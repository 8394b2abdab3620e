// A copy to a place of known size, of as many bytes as come: with the C library's checks, it calls another
// function. Sources of the library have no such copy, so that nothing in them would tell whether the checks
// are on.

#include <cstddef>
#include <cstring>

extern "C" {

#ifdef __OPTIMIZE__
extern const char vorl_probe_is_optimised;
const char vorl_probe_is_optimised = 1;
#endif

void vorl_probe_sink(const char* text);
void vorl_probe(const char* text, std::size_t size);

void vorl_probe(const char* text, std::size_t size) {
    char room[16];
    std::memcpy(room, text, size);
    vorl_probe_sink(room);
}
}
