// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "QvApi_IP/AVIWriter/AVIFile.h"

namespace QvApi {

/// AVI 1.0: one list of frames and behind it an index of them, up to 2 GiB. A missing frame is an
/// empty chunk.
class CAVIFile10 : public CAVIFile {
 public:
  using CAVIFile::CAVIFile;

  int AVIStart() override;

 protected:
  int AVIFileOpen(const char* name, _UAVI_FILE_HANDLES* handles) override;
  int AddFrame(_UAVI_FILE_HANDLES* handles, IQvImage* image, unsigned int index) override;
  int AVIFileClose(_UAVI_FILE_HANDLES* handles) override;

 private:
  int AddChunks(_UAVI_FILE_HANDLES& handles, const void* bytes, std::size_t count,
                std::uint32_t size);
  int AddMissing(_UAVI_FILE_HANDLES& handles, std::uint32_t index);
  int WriteIndex(_UAVI_FILE_HANDLES& handles, std::uint32_t& movieSize);
  int WriteHead(_UAVI_FILE_HANDLES& handles, std::uint32_t movieSize);

  std::vector<std::uint32_t> m_sizes;  ///< Of the chunks of the file.
};

using CAVIFileNotCompressed = CodedAVIFile<CAVIFile10, AVI::kNotCompressed>;
using CAVIFileMJPEG = CodedAVIFile<CAVIFile10, AVI::kMotionJpeg>;

}  // namespace QvApi
