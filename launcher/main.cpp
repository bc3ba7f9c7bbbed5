#include <clocale>
#include <cstdio>
#include <exception>

#include "launcher/impl.h"

int main(int argc, char** argv) {
  static_cast<void>(std::setlocale(LC_ALL, ".UTF8"));
  try {
    return Impl(argc, argv);
  } catch (const std::exception& failure) {
    // Reported in the launcher's own words first; rethrown, it then ends the process loudly.
    std::fprintf(stderr, "Error occurred: %s\n", failure.what());
    throw;
  } catch (...) {
    std::fputs("Unknown failure occurred\n", stderr);
    throw;
  }
}
