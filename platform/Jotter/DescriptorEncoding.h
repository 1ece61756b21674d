#pragma once

// Descriptors as bytes, for the descriptor area of a trace file.

#include "platform/Jotter/Descriptor.h"
#include "platform/Vex/Export.h"

#include <cstddef>
#include <map>
#include <span>
#include <vector>

namespace Jotter {

/// One entry of the descriptor area. Texts over 65,535 bytes are cut.
VEX_EXPORT std::vector< std::byte > encodeDescriptor( DescriptorId id,
                                                      const Descriptor & descriptor );

/// The entries of a descriptor area, as far as they are whole; how many are damaged goes to
/// `damaged`.
VEX_EXPORT std::map< DescriptorId, Descriptor > decodeDescriptors(
   std::span< const std::byte > area, std::size_t * damaged = nullptr );

} // namespace Jotter
