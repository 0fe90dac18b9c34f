// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/ZippedDocument.h"

#include <Base/GCException.h>
#include <strings.h>
#include <zip.h>

#include <memory>
#include <new>

namespace GenApi {
namespace {

using Archive = std::unique_ptr<zip_t, decltype(&zip_discard)>;
using File = std::unique_ptr<zip_file_t, decltype(&zip_fclose)>;

[[noreturn]] void ThrowDamaged(const char* reason) {
  throw RUNTIME_EXCEPTION("The zipped document is unreadable: %s", reason);
}

/// `bytes` must outlive the archive.
Archive Open(std::string_view bytes) {
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  zip_t* archive = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
  if (!archive) {
    zip_source_free(source);
    const std::string reason = zip_error_strerror(&error);
    zip_error_fini(&error);
    ThrowDamaged(reason.c_str());
  }
  return {archive, &zip_discard};
}

bool IsDocument(const zip_stat_t& entry) {
  constexpr std::string_view kExtension = ".xml";
  if ((entry.valid & ZIP_STAT_NAME) == 0 || (entry.valid & ZIP_STAT_SIZE) == 0) return false;
  const std::string_view name = entry.name;
  return name.size() >= kExtension.size() &&
         ::strcasecmp(name.end() - kExtension.size(), kExtension.data()) == 0;
}

zip_stat_t FindDocument(zip_t* archive) {
  const zip_int64_t count = zip_get_num_entries(archive, 0);
  for (zip_int64_t i = 0; i < count; ++i) {
    zip_stat_t entry;
    if (zip_stat_index(archive, static_cast<zip_uint64_t>(i), 0, &entry) == 0 && IsDocument(entry))
      return entry;
  }
  ThrowDamaged("it holds no XML file");
}

std::string Unzip(std::string_view bytes) {
  const Archive archive = Open(bytes);
  const zip_stat_t entry = FindDocument(archive.get());
  if (entry.size > kMaxUnzippedSize) ThrowDamaged("it expands to too many bytes");
  const File file(zip_fopen_index(archive.get(), entry.index, 0), &zip_fclose);
  if (!file) ThrowDamaged(zip_strerror(archive.get()));
  std::string text(entry.size, '\0');
  char behind;
  // The library compares check sums when it comes to the end.
  if (zip_fread(file.get(), text.data(), text.size()) != static_cast<zip_int64_t>(text.size()) ||
      zip_fread(file.get(), &behind, 1) != 0)
    ThrowDamaged("its contents are damaged");
  return text;
}

}  // namespace

std::string UnzipDocument(std::string_view archive) {
  try {
    return Unzip(archive);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
}

}  // namespace GenApi
