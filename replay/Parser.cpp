#include "replay/Parser.h"

#include "replay/Grammar.h"
#include "replay/Lexer.h"
#include "replay/ScenarioError.h"
#include "replay/Text.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace Replay {

Scenario parseScenario( std::string_view text ) {
   Scenario scenario;
   std::vector< Word > words;
   text = withoutByteOrderMark( text );
   for ( std::size_t number = 1; !text.empty(); ++number ) {
      const std::size_t end = std::min( text.find( '\n' ), text.size() );
      std::string_view line = text.substr( 0, end );
      text.remove_prefix( std::min( end + 1, text.size() ) );
      if ( line.ends_with( '\r' ) ) {
         line.remove_suffix( 1 );
      }
      try {
         splitWords( line, words );
         if ( words.empty() ) {
            continue;
         }
         Statement statement = parseStatement( words );
         const std::size_t textAt = scenario.texts.size();
         appendWords( scenario.texts, words );
         scenario.expectsTrace |= std::holds_alternative< ExpectTrace >( statement );
         scenario.ofPair |= std::visit(
            []( const auto & of ) { return isOfPair< std::remove_cvref_t< decltype( of ) > >; },
            statement );
         scenario.steps.push_back(
            { number, textAt, scenario.texts.size() - textAt, std::move( statement ) } );
      } catch ( const StatementError & error ) {
         throw ScenarioError( number, error.what() );
      }
   }
   return scenario;
}

} // namespace Replay
