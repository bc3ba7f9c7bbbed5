// What a standard stream is written to, and the manners that go with it.
#pragma once

#include <cstddef>

namespace doctor {

/// A place that text is written to.
struct Terminal {
  bool is_there = false;     ///< Whether it is a terminal at all.
  bool takes_colors = true;  ///< False when TERM says that it is dumb, or NO_COLOR is set.
  std::size_t columns = 0;   ///< As COLUMNS says, else as the terminal does; 0 when neither does.
  bool can_erase = true;     ///< False when TERM says that it is dumb: what is written stays.
};

/// Looks at the descriptor and the environment.
Terminal LookAtTerminal(int descriptor);

/// How wide a page for it is: as wide as a terminal within bounds that can be read, 100 columns otherwise.
std::size_t PageWidth(const Terminal& terminal);

}  // namespace doctor
