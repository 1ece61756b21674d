// A counted reference is taken and dropped. Which of the library's pointer modes is measured, the
// program's command line says: it is one for the process.

#include "bench/Registry.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Ptr.h"

#include <benchmark/benchmark.h>
#include <boost/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <memory>

namespace Bench::Parts {

namespace {

class VexObject final : public Vex::Object {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Bench::VexObject" };
      return type;
   }
};

template < class Policy >
class BoostObject : public boost::intrusive_ref_counter< BoostObject< Policy >, Policy > {
 public:
   BoostObject() = default;
   BoostObject( const BoostObject & ) = delete;
   BoostObject & operator=( const BoostObject & ) = delete;
   BoostObject( BoostObject && ) = delete;
   BoostObject & operator=( BoostObject && ) = delete;
   virtual ~BoostObject() = default;
};

template < class Reference >
void takeAndDrop( benchmark::State & state, Reference held ) {
   for ( auto _ : state ) {
      Reference taken( held );
      benchmark::DoNotOptimize( taken );
   }
}

template < class Policy >
void intrusive( benchmark::State & state ) {
   takeAndDrop( state, boost::intrusive_ptr< BoostObject< Policy > >( new BoostObject< Policy > ) );
}

} // namespace

void registerReferences() {
   const bool threadSafe = Vex::pointerMode() == Vex::PointerMode::threadSafe;
   benchmark::RegisterBenchmark(
      threadSafe ? "reference/ours-thread-safe" : "reference/ours-plain",
      []( benchmark::State & state ) { takeAndDrop( state, Vex::make< VexObject >() ); } );
   benchmark::RegisterBenchmark( "reference/shared_ptr", []( benchmark::State & state ) {
      takeAndDrop( state, std::make_shared< int >( 1 ) );
   } );
   benchmark::RegisterBenchmark( "reference/intrusive-plain",
                                 intrusive< boost::thread_unsafe_counter > );
   benchmark::RegisterBenchmark( "reference/intrusive-thread-safe",
                                 intrusive< boost::thread_safe_counter > );
}

} // namespace Bench::Parts
