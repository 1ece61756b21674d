#pragma once

#include "platform/Vex/Entity.h"
#include "platform/Vex/Enum.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/String.h"
#include "platform/Vex/Type.h"
#include "tests/support/Marks.h"
#include "tests/support/Names.h"

#include <functional>
#include <ostream>
#include <string>
#include <utility>

namespace TestSupport {

/// Marks each notification of an entity, "intfStatus(PortChannel10)", and runs `look`, by which a
/// test sees the entity as a notifiee sees it.
template < class EntityType >
class NotificationLog final : public Vex::ConstNotifiee< EntityType > {
 public:
   using Base = Vex::ConstNotifiee< EntityType >;
   using Look = std::function< Vex::String() >;

   explicit NotificationLog( Look look ) : look_( std::move( look ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "TestSupport::NotificationLog" };
      return type;
   }
   void onAttribute( typename Base::Attribute attribute, const typename Base::Key & key ) override {
      marks_.add( Vex::String( Vex::enumName( attribute ) ) + '(' + keyText( key ) + ')' +
                  ( look_ ? look_() : "" ) );
   }

   /// The notifications since the last time.
   Vex::String take() { return marks_.take(); }

 private:
   template < class Key >
   static Vex::String keyText( const Key & key ) {
      if constexpr ( requires( std::ostream & out ) { out << key; } ) {
         return text( key );
      } else if constexpr ( requires { key.value(); } ) {
         return std::to_string( key.value() );
      } else {
         return "";
      }
   }

   Look look_;
   Marks marks_;
};

template < class EntityType >
Vex::Ptr< NotificationLog< EntityType > > logOf(
   const Vex::Ptr< EntityType > & entity,
   typename NotificationLog< EntityType >::Look look = nullptr ) {
   auto log = Vex::make< NotificationLog< EntityType > >( std::move( look ) );
   log->notifierIs( entity );
   return log;
}

} // namespace TestSupport
