// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// As much of the GenTL interface (GenICam GenTL standard 1.5, EMVA) as is needed to read a
/// device's document and to report errors.
namespace GenTL {

using GC_ERROR = std::int32_t;

/// Results of GenTL functions.
enum GC_ERROR_LIST : std::int32_t {
  GC_ERR_SUCCESS = 0,
  GC_ERR_ERROR = -1001,
  GC_ERR_NOT_INITIALIZED = -1002,
  GC_ERR_NOT_IMPLEMENTED = -1003,
  GC_ERR_RESOURCE_IN_USE = -1004,
  GC_ERR_ACCESS_DENIED = -1005,
  GC_ERR_INVALID_HANDLE = -1006,
  GC_ERR_INVALID_ID = -1007,
  GC_ERR_NO_DATA = -1008,
  GC_ERR_INVALID_PARAMETER = -1009,
  GC_ERR_IO = -1010,
  GC_ERR_TIMEOUT = -1011,
  GC_ERR_ABORT = -1012,
  GC_ERR_INVALID_BUFFER = -1013,
  GC_ERR_NOT_AVAILABLE = -1014,
  GC_ERR_INVALID_ADDRESS = -1015,
  GC_ERR_BUFFER_TOO_SMALL = -1016,
  GC_ERR_INVALID_INDEX = -1017,
  GC_ERR_PARSING_CHUNK_DATA = -1018,
  GC_ERR_INVALID_VALUE = -1019,
  GC_ERR_RESOURCE_EXHAUSTED = -1020,
  GC_ERR_OUT_OF_MEMORY = -1021,
  GC_ERR_BUSY = -1022,
  GC_ERR_AMBIGUOUS = -1023,
  GC_ERR_CUSTOM_ID = -10000,
};

/// A module that has registers.
using PORT_HANDLE = void*;

/// Tells the last error of the calling thread. With a null `text` it stores the size of the text in
/// `*size`.
using PGCGetLastError = GC_ERROR (*)(GC_ERROR* error, char* text, std::size_t* size);

/// Tells where the document of a module is, with its ending zero. With a null `url` it stores the
/// size of the text in `*size`.
using PGCGetPortURL = GC_ERROR (*)(PORT_HANDLE port, char* url, std::size_t* size);
/// Reads registers; `*size` becomes the number of bytes read.
using PGCReadPort = GC_ERROR (*)(PORT_HANDLE port, std::uint64_t address, void* buffer,
                                 std::size_t* size);

}  // namespace GenTL

namespace QvApi {

/// Functions of a GenTL producer; null for those that it does not have.
struct CQvGenTLLib {
  GenTL::PGCGetLastError GCGetLastError = nullptr;
  GenTL::PGCGetPortURL GCGetPortURL = nullptr;
  GenTL::PGCReadPort GCReadPort = nullptr;
};

}  // namespace QvApi
