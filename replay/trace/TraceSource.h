#pragma once

// A trace file on disk, opened once and read as often as one likes, also while its agent writes it.
//
// Ownership: holds the open file, so that its identity is taken by no other file.
// Errors: what cannot be opened or is no file is an Unusable; so is what holds no trace. Whatever
// can be saved of a damaged file is read.

#include "platform/Jotter/TraceReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/types.h>

namespace TraceTool {

class Unusable : public std::runtime_error {
 public:
   explicit Unusable( const std::string & what ) : std::runtime_error( what ) {}
};

/// Which file it is, whatever its name.
struct FileIdentity {
   dev_t device;
   ino_t number;

   friend bool operator==( const FileIdentity &, const FileIdentity & ) = default;
};

/// Of the file that has this name now; nothing when there is none.
std::optional< FileIdentity > identityOf( const std::string & path ) noexcept;

class TraceSource {
 public:
   explicit TraceSource( const std::string & path );
   TraceSource( const TraceSource & ) = delete;
   TraceSource & operator=( const TraceSource & ) = delete;
   TraceSource( TraceSource && ) = delete;
   TraceSource & operator=( TraceSource && ) = delete;
   ~TraceSource();

   FileIdentity identity() const noexcept { return identity_; }

   /// False: since the last read nothing was begun to be written, and the file is as long as then.
   bool hasChanged();

   /// The file as it is now; records with a sequence above `after`.
   Jotter::TraceFileContents read( std::uint64_t after );

 private:
   // How far its writer is, and how long it is.
   struct State {
      std::uint64_t sequence = 0;
      std::uint64_t cell = 0;
      std::size_t size = 0;

      friend bool operator==( const State &, const State & ) = default;
   };

   void map();
   State state() const;
   void unmap() noexcept;

   int descriptor_;
   FileIdentity identity_{};
   std::span< std::byte > mapping_;
   State stateRead_;
};

} // namespace TraceTool
