#include "replay/Terminal.h"

#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Replay {

bool isTerminal( int descriptor ) noexcept {
   const char * const kind = std::getenv( "TERM" );
   const std::string_view name = kind != nullptr ? kind : "";
   return !name.empty() && name != "dumb" && isatty( descriptor ) == 1;
}

std::size_t columnsOf( int terminal ) noexcept {
   constexpr std::size_t usual = 80;
   winsize size{};
   return ioctl( terminal, TIOCGWINSZ, &size ) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

} // namespace Replay
