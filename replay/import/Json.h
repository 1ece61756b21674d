#pragma once

// Reads JSON (RFC 8259) into values that know where they stand, so that whoever finds something
// wrong with one can say where.
//
// Errors: text that is no JSON, or no UTF-8, a key that an object has twice, and nesting without
// reason are a JsonError. Numbers are kept as they are written.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Import {

/// What is wrong, and where: which byte of the text, from 0.
class JsonError : public std::runtime_error {
 public:
   JsonError( std::size_t at, const std::string & what ) : std::runtime_error( what ), at_( at ) {}

   std::size_t at() const noexcept { return at_; }

 private:
   std::size_t at_;
};

enum class JsonKind : std::uint8_t { null, boolean, number, string, array, object };

/// How messages call it.
std::string_view nameOf( JsonKind kind ) noexcept;

struct JsonMember;

struct JsonValue {
   std::size_t at = 0; // of its first byte
   JsonKind kind = JsonKind::null;
   std::string text; // of a string, what it says; of a boolean or number, as it is written
   std::vector< JsonValue > items; // of an array
   std::vector< JsonMember > members; // of an object, as they are written
};

struct JsonMember {
   std::size_t at = 0; // of its key
   std::string key;
   JsonValue value;
};

/// The one value that the whole text is, behind a byte order mark, if there is one.
JsonValue parseJson( std::string_view text );

/// Line and column, both from 1, of a byte; columns are characters.
struct Place {
   std::size_t line = 1;
   std::size_t column = 1;
};
Place placeOf( std::string_view text, std::size_t at ) noexcept;

} // namespace Import
