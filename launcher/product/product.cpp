#include "launcher/product/product.h"

namespace launcher {

std::map<tov::WideString, tov::WideString> RuntimeEnvironment() {
  return {{u"DOTNET_EnableDiagnostics", u"0"}};
}

}  // namespace launcher
