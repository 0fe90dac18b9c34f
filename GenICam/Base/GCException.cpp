// SPDX-License-Identifier: MIT
#include <Base/GCException.h>

#include <string>

namespace GenICam {

struct GenericException::Texts {
  std::string description;
  std::string sourceFileName;
  std::string what;
};

namespace {

std::string Copy(const char* text) { return text == nullptr ? std::string() : std::string(text); }

}  // namespace

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* exceptionType) noexcept
    : m_sourceLine(sourceLine) {
  try {
    Texts texts{Copy(description), Copy(sourceFileName), {}};
    texts.what = texts.description + " : " + Copy(exceptionType) + " thrown (file '" +
                 texts.sourceFileName + "', line " + std::to_string(sourceLine) + ")";
    m_texts = std::make_shared<const Texts>(std::move(texts));
  } catch (const std::bad_alloc&) {
    // A failure without its text is better than another failure in its place.
  }
}

GenericException::~GenericException() = default;

const char* GenericException::GetDescription() const noexcept {
  return m_texts ? m_texts->description.c_str() : "";
}

const char* GenericException::GetSourceFileName() const noexcept {
  return m_texts ? m_texts->sourceFileName.c_str() : "";
}

unsigned int GenericException::GetSourceLine() const noexcept { return m_sourceLine; }

const char* GenericException::what() const noexcept {
  return m_texts ? m_texts->what.c_str() : "(no memory for the text of this exception)";
}

// Out of line, so that each class has its virtual table in this library alone.
BadAllocException::~BadAllocException() = default;
InvalidArgumentException::~InvalidArgumentException() = default;
OutOfRangeException::~OutOfRangeException() = default;
PropertyException::~PropertyException() = default;
RuntimeException::~RuntimeException() = default;
LogicalErrorException::~LogicalErrorException() = default;
AccessException::~AccessException() = default;
TimeoutException::~TimeoutException() = default;
DynamicCastException::~DynamicCastException() = default;

}  // namespace GenICam
