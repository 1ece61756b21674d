#include "platform/Vex/NullArgumentError.h"

namespace Vex {

NullArgumentError::NullArgumentError( std::string_view mutator )
    : std::invalid_argument( String( mutator ) + ": null argument" ), mutator_( mutator ) {}

// Out of line, so that the vtable and the type information live once, in libInterlockModel.so.
NullArgumentError::~NullArgumentError() = default;

} // namespace Vex
