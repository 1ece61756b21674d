#include "platform/Jotter/RecordEncoding.h"

namespace Jotter {

std::size_t keptLength( std::string_view text ) noexcept {
   if ( text.size() <= Layout::longestText ) {
      return text.size();
   }
   std::size_t length = Layout::longestText;
   // A byte 10xxxxxx continues a character: cut before the character that it belongs to.
   while ( length > 0 && ( static_cast< unsigned char >( text[ length ] ) & 0xC0U ) == 0x80U ) {
      --length;
   }
   return length;
}

std::byte * encodeLongText( std::byte * to, std::string_view text ) noexcept {
   const std::size_t kept = keptLength( text );
   const auto mark =
      static_cast< std::uint16_t >( kept < text.size() ? kept | Layout::cutBit : kept );
   *to = static_cast< std::byte >( Layout::longTextMark );
   std::memcpy( to + 1, &mark, sizeof mark );
   std::memcpy( to + 3, text.data(), kept );
   return to + 3 + kept;
}

} // namespace Jotter
