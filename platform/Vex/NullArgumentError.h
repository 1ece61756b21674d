#pragma once

#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <stdexcept>
#include <string_view>

namespace Vex {

/// Thrown by a mutator that was given a null reference where it needs an entity. The mutator has
/// changed nothing.
class VEX_EXPORT NullArgumentError : public std::invalid_argument {
 public:
   /// `mutator` is the mutator's name, for example "initialMemberSmIs"; the message begins with it.
   explicit NullArgumentError( std::string_view mutator );
   NullArgumentError( const NullArgumentError & ) = default;
   NullArgumentError & operator=( const NullArgumentError & ) = default;
   NullArgumentError( NullArgumentError && ) = default;
   NullArgumentError & operator=( NullArgumentError && ) = default;
   ~NullArgumentError() override;

   const String & mutator() const noexcept { return mutator_; }

 private:
   String mutator_;
};

} // namespace Vex
