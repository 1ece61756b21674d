#include "replay/pair/Exchange.h"

#include "platform/Vex/Entity.h"

#include <optional>
#include <utility>

namespace Replay::Peering {

namespace {

/// Tells of each change of an install request.
class RequestWatcher final : public Vex::ConstNotifiee< Mlag::AclInstallRequest > {
 public:
   explicit RequestWatcher( Responder::Answer changed ) : changed_( std::move( changed ) ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Peering::RequestWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Nodo::IntfId & lag ) override {
      switch ( attribute ) {
      case Attribute::installRequest:
         const std::uint32_t * const token = notifier()->installRequest().find( lag );
         changed_( lag, token != nullptr ? std::optional( *token ) : std::nullopt );
         break;
      }
   }

 private:
   Responder::Answer changed_;
};

} // namespace

/// One switch's end: what it sends, and what it does with what it gets.
class Exchange::End {
 public:
   End( Exchange & exchange,
        Side side,
        Vex::Ptr< Kel::TaskScheduler > scheduler,
        const Entities & entities )
       : exchange_( exchange ), side_( side ), faults_( indexOf( side ) ),
         wire_( std::move( scheduler ),
                faults_,
                [ &exchange, to = otherThan( side ) ]( const Message & message ) {
                   exchange.arrive( to, message );
                } ),
         responses_( entities.aclResponseFromPeer ),
         responder_( entities.aclInput,
                     entities.hwLagConfig,
                     [ this ]( Nodo::IntfId lag, std::optional< std::uint32_t > token ) {
                        send( { Content::response, lag, token } );
                     } ),
         requestWatcher_( Vex::make< RequestWatcher >(
            [ this ]( Nodo::IntfId lag, std::optional< std::uint32_t > token ) {
               send( { Content::request, lag, token } );
            } ) ) {
      requestWatcher_->notifierIs( entities.aclRequestToPeer );
   }

   WireFaults & faults() noexcept { return faults_; }
   Responder & responder() noexcept { return responder_; }
   std::size_t underWay() const noexcept { return wire_.underWay(); }

   void act( const Message & message ) {
      switch ( message.content ) {
      case Content::request:
         responder_.requestIs( message.lag, message.token );
         break;
      case Content::response:
         if ( message.token ) {
            responses_->installResponseIs( message.lag, *message.token );
         } else {
            responses_->installResponseDel( message.lag );
         }
         break;
      }
   }

 private:
   void send( Message message ) {
      const Fate fate = wire_.send( message );
      exchange_.events_.sent( side_, message, fate );
   }

   Exchange & exchange_; // holds us
   Side side_;
   WireFaults faults_;
   Wire wire_;
   Vex::Ptr< Mlag::AclInstallResponse > responses_;
   Responder responder_;
   Vex::Ptr< RequestWatcher > requestWatcher_; // goes first: it sends
};

Exchange::Exchange( const Vex::Ptr< Kel::TaskScheduler > & scheduler,
                    const Entities & left,
                    const Entities & right,
                    ExchangeEvents & events )
    : events_( events ), ends_{ std::make_unique< End >( *this, Side::left, scheduler, left ),
                                std::make_unique< End >( *this, Side::right, scheduler, right ) } {}

Exchange::~Exchange() = default;

WireFaults & Exchange::faults( Side from ) noexcept {
   return ends_[ indexOf( from ) ]->faults();
}

Responder & Exchange::responder( Side side ) noexcept {
   return ends_[ indexOf( side ) ]->responder();
}

std::size_t Exchange::underWay() const noexcept {
   return ends_[ 0 ]->underWay() + ends_[ 1 ]->underWay();
}

void Exchange::arrive( Side at, const Message & message ) {
   events_.arriving( at, message );
   ends_[ indexOf( at ) ]->act( message );
   events_.arrived( at, message );
}

} // namespace Replay::Peering
