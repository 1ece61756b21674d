#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace Replay {

/// What is wrong with one statement: the offending word and what was wanted. Whoever knows the line
/// makes a ScenarioError of it.
class StatementError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

/// The same with its line, from 1; 0: of the file as a whole.
class ScenarioError : public std::runtime_error {
 public:
   ScenarioError( std::size_t line, const std::string & what )
       : std::runtime_error( what ), line_( line ) {}

   std::size_t line() const noexcept { return line_; }

 private:
   std::size_t line_;
};

} // namespace Replay
