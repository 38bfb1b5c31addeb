// Small replacements for functions of the C++ runtime, which would add large parts of it to the
// DLL.
#include <cstdlib>
#include <exception>
#include <new>

namespace __gnu_cxx {

// std::terminate calls this handler. The standard handler prints the exception's name, which would
// link a demangler and formatted output.
void __verbose_terminate_handler() {
    std::abort();
}

}  // namespace __gnu_cxx

namespace std {

// Containers call this function at their size limit, which is larger than any memory, so it reports
// exhausted memory. Throwing the standard exception would add all of std::string to the DLL.
void __throw_length_error(const char*) {
    throw bad_alloc();
}

}  // namespace std
