#include <clocale>
#include <exception>
#include <iostream>

#include "launcher/impl.h"

int main(int argc, char** argv) {
  static_cast<void>(std::setlocale(LC_ALL, ".UTF8"));
  try {
    return Impl(argc, argv);
  } catch (const std::exception& failure) {
    // Reported in the launcher's own words first; rethrown, it then ends the process loudly.
    std::cerr << "Error occurred: " << failure.what() << std::endl;
    throw;
  } catch (...) {
    std::cerr << "Unknown failure occurred" << std::endl;
    throw;
  }
}
