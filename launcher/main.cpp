#include <clocale>
#include <cstdio>
#include <exception>

#include "launcher/impl.h"
#include "launcher/product/last_words.h"

namespace {

void Report(launcher::LastWords words) {
  std::fprintf(stderr, "%s%s\n", words.head, words.what);
}

}  // namespace

int main(int argc, char** argv) {
  // Where there is no such locale the plain one stays, and does as well: the launcher's own text is UTF-8 under each.
  static_cast<void>(std::setlocale(LC_ALL, ".UTF8"));
  // Reported in the launcher's own words first; rethrown, a failure then ends the process loudly.
  try {
    return Impl(argc, argv);
  } catch (const std::exception& failure) {
    Report(launcher::LastWordsAfterException(failure.what()));
    throw;
  } catch (...) {
    Report(launcher::kLastWordsAfterAnythingElse);
    throw;
  }
}
