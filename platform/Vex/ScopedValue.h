#pragma once

#include <utility>

namespace Vex {

/// Gives a variable another value for as long as the scope lives, also when that ends by an
/// exception.
template < class T >
class ScopedValue {
 public:
   ScopedValue( T & variable, T value )
       : variable_( variable ), before_( std::exchange( variable, std::move( value ) ) ) {}
   ScopedValue( const ScopedValue & ) = delete;
   ScopedValue & operator=( const ScopedValue & ) = delete;
   ScopedValue( ScopedValue && ) = delete;
   ScopedValue & operator=( ScopedValue && ) = delete;
   ~ScopedValue() { variable_ = std::move( before_ ); }

 private:
   T & variable_;
   T before_;
};

} // namespace Vex
