#include "replay/pair/Wire.h"

#include "platform/Kel/TaskPriority.h"
#include "platform/Kel/TimerTask.h"
#include "platform/Vex/Entity.h"

#include <algorithm>
#include <utility>

namespace Replay::Peering {

/// One message's way: watches the task that runs when it arrives.
class Wire::Arrival final : public Vex::ConstNotifiee< Kel::TimerTask > {
 public:
   Arrival( Wire & wire, const Message & message ) noexcept : wire_( wire ), message_( message ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Peering::Wire::Arrival" };
      return type;
   }
   void onAttribute( Attribute /* attribute */, const Key & /* key */ ) override {
      if ( notifier()->taskCurrentlyRunning() ) {
         wire_.deliver( *this );
      }
   }

   const Message & message() const noexcept { return message_; }

 private:
   // Does not dangle: the wire holds the only reference, but for the call of deliver().
   Wire & wire_;
   Message message_;
};

Wire::Wire( Vex::Ptr< Kel::TaskScheduler > scheduler, WireFaults & faults, Deliver deliver )
    : scheduler_( std::move( scheduler ) ), faults_( faults ), deliver_( std::move( deliver ) ) {}

Wire::~Wire() = default;

Fate Wire::send( Message & message ) {
   message.sequence = ++sent_;
   Fate fate = faults_.next();
   for ( const Vex::Seconds delay : fate.delays ) {
      auto task = Vex::make< Kel::TimerTask >( scheduler_, Kel::TaskPriority( 0 ), "wire" );
      task->scheduleTaskDelay( delay );
      auto arrival = Vex::make< Arrival >( *this, message );
      arrival->notifierIs( std::move( task ) );
      underWay_.push_back( std::move( arrival ) );
   }
   return fate;
}

void Wire::deliver( const Arrival & arrival ) {
   const Message message = arrival.message();
   std::erase_if( underWay_, [ & ]( const auto & other ) { return other.get() == &arrival; } );
   deliver_( message );
}

} // namespace Replay::Peering
