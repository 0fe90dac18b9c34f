// SPDX-License-Identifier: MIT
// What the tests of the video filer share: a listener, images that are told apart in a file, and a
// reader of the simplest kind of file.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/QvAVIWriter.h"

namespace QvApi::Testing {

/// Keeps what a filer reports, such as "open a.avi". Must outlive the filer.
class Reports : public IQvCallback {
 public:
  std::function<void(const std::string& text)> onReport;  ///< Runs on the worker's thread.
  std::vector<std::string> texts;                         ///< To be read when no worker runs.

  void OnIQvCallback(IQvCallbackParamBase* param) override {
    using Open = IQvCallbackParamQvApiIPVideoFilerOpen;
    using Close = IQvCallbackParamQvApiIPVideoFilerClose;
    using Error = IQvCallbackParamQvApiIPVideoFilerError;
    const auto type = param->GetCallbackType();
    const std::string text =
        type == 6   ? "open " + FileName(dynamic_cast<Open&>(*param).GetFileName())
        : type == 7 ? "close " + FileName(dynamic_cast<Close&>(*param).GetFileName())
                    : std::string(dynamic_cast<Error&>(*param).GetException().GetDescription());
    texts.push_back(text);
    if (onReport) onReport(text);
  }
  void Destroy() override {}

 private:
  static std::string FileName(const GenICam::gcstring& path) {
    return std::filesystem::path(path.c_str()).filename().string();
  }
};

/// An image whose samples all are `level`, and two bytes behind each line too.
inline TestImage Level(char level, std::size_t width = 6, std::size_t height = 2) {
  TestImage image(width, height, PixelFormat::Mono8, 2);
  std::ranges::fill(image.All(), static_cast<std::uint8_t>(level));
  return image;
}

inline void RecordSimply(CQvAVIWriter& filer) {
  filer.SetVideoFileFormat(QvVideoFileFormat_AVI1);
  filer.SetVideoFileCompression(QvVideoFileCompression_Uncompressed);
}

/// The levels of the frames of a file that was recorded so, a point for each missing one.
inline std::string FramesIn(const std::string& name) {
  const FileBytes file = ReadFile(name);
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  std::string frames;
  std::size_t at = text.find("movi");
  if (at == std::string_view::npos) return "no movie";
  at += 4 + 8;  // an empty chunk stands before all frames
  while (text.substr(at, 4) == "00db") {
    std::uint32_t size;
    std::memcpy(&size, &file[at + 4], 4);
    frames += size == 0 ? '.' : text[at + 8];
    at += 8 + size;
  }
  return frames;
}

}  // namespace QvApi::Testing
