#include "foundation/stream_output.h"

#include <ostream>
#include <string>
#include <typeinfo>

#include "foundation/cast.h"

namespace tov::types {

std::ostream& operator<<(std::ostream& stream, const WideString& text) {
  try {
    const std::string bytes = tov::text::Cast<std::string>(text);
    return stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  } catch (const std::bad_cast&) {  // One odd name must not cost the whole line.
    return stream;
  }
}

}  // namespace tov::types
