#pragma once

// Vex::Ptr<T>: a counted reference to a Vex::Object, or null. Ptr<const T> is a read-only view.
//
//    Vex::Ptr< Mlag::Status > status = Vex::make< Mlag::Status >();
//    Vex::Ptr< const Mlag::Status > view = status;      // up: to a base or to const, implicit
//    auto sm = Vex::ptrCast< SomeSm >( object );        // down: null where the type does not fit
//
// Ownership: shared; the object dies with its last reference (platform/Vex/Object.h).
// Threading: as the pointer mode has it; one Ptr variable is never shared between threads.
// Re-entrancy: releasing nulls the variable first and drops the count after, so that whatever the
// destruction sets off finds the variable null already.

#include "platform/Vex/Object.h"

#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace Vex {

template < class T >
class Ptr {
 public:
   using element_type = T;

   constexpr Ptr() noexcept = default;
   constexpr Ptr( std::nullptr_t ) noexcept {} // NOLINT(google-explicit-constructor): null is a Ptr
   explicit Ptr( T * object ) noexcept : object_( object ) {
      if ( object_ != nullptr ) {
         object_->referenceAdd();
      }
   }

   Ptr( const Ptr & other ) noexcept : Ptr( other.object_ ) {}
   Ptr( Ptr && other ) noexcept : object_( std::exchange( other.object_, nullptr ) ) {}

   template < class U >
      requires std::convertible_to< U *, T * >
   Ptr( const Ptr< U > & other ) noexcept // NOLINT(google-explicit-constructor): up-conversion
       : Ptr( static_cast< T * >( other.get() ) ) {}
   template < class U >
      requires std::convertible_to< U *, T * >
   Ptr( Ptr< U > && other ) noexcept // NOLINT(google-explicit-constructor): up-conversion
       : object_( other.leak() ) {}

   constexpr ~Ptr() { release(); } // a constant null needs no clean-up when the process ends

   Ptr & operator=( const Ptr & other ) noexcept {
      Ptr( other ).swap( *this );
      return *this;
   }
   Ptr & operator=( Ptr && other ) noexcept {
      Ptr( std::move( other ) ).swap( *this );
      return *this;
   }

   /// Takes over the count that `object` was born with.
   static Ptr adopt( T * object ) noexcept {
      Ptr ptr;
      ptr.object_ = object;
      return ptr;
   }

   /// Gives the reference up without dropping the count; the caller owes the drop.
   [[nodiscard]] T * leak() noexcept { return std::exchange( object_, nullptr ); }

   constexpr void release() noexcept {
      if ( T * const object = std::exchange( object_, nullptr ); object != nullptr ) {
         object->referenceDrop();
      }
   }

   void swap( Ptr & other ) noexcept { std::swap( object_, other.object_ ); }

   T * get() const noexcept { return object_; }
   T & operator*() const noexcept { return *object_; }
   T * operator->() const noexcept { return object_; }
   explicit operator bool() const noexcept { return object_ != nullptr; }

   template < class U >
   friend bool operator==( const Ptr & a, const Ptr< U > & b ) noexcept {
      return a.get() == b.get();
   }
   friend bool operator==( const Ptr & a, std::nullptr_t ) noexcept { return a.get() == nullptr; }

 private:
   T * object_ = nullptr;
};

/// Creates a T and adopts the count it is born with.
template < class T, class... Arguments >
Ptr< T > make( Arguments &&... arguments ) {
   return Ptr< T >::adopt( new T( std::forward< Arguments >( arguments )... ) );
}

/// Down-conversion: null where the object is null or no U.
template < class U, class T >
Ptr< U > ptrCast( const Ptr< T > & ptr ) noexcept {
   return Ptr< U >( dynamic_cast< U * >( ptr.get() ) );
}

} // namespace Vex
