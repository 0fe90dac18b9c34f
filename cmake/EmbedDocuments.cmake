# SPDX-License-Identifier: MIT
# Writes the source that holds the node-map documents: cmake -DOUTPUT=file -DDOCUMENTS=a;b -P this.
# A document's file name is <number>_<stem>.xml.
set(texts "")
set(rows "")
foreach(document IN LISTS DOCUMENTS)
  get_filename_component(name ${document} NAME_WE)
  string(REGEX MATCH "^[0-9]+" id ${name})
  string(REGEX REPLACE "^[0-9]+_" "" stem ${name})
  file(READ ${document} text)
  string(APPEND texts
    "constexpr std::string_view IDR_XML_FILES_${stem} = R\"document(${text})document\";\n")
  string(APPEND rows "    {${id}, IDR_XML_FILES_${stem}},\n")
endforeach()
file(WRITE ${OUTPUT} "// Made by cmake/EmbedDocuments.cmake from the documents in xml/.
#include \"QvApi_IP/QvResource_QvApi_IP.h\"

#include <string_view>

namespace QvApi {
namespace {

${texts}
struct Document {
  int id;
  std::string_view text;
};

constexpr Document kDocuments[] = {
${rows}};

std::string_view Find(int id) {
  for (const Document& document : kDocuments)
    if (document.id == id) return document.text;
  return {};
}

}  // namespace

const unsigned char* CQvResource_QvApi_IP::getData(int id) {
  return reinterpret_cast<const unsigned char*>(Find(id).data());
}

std::size_t CQvResource_QvApi_IP::getSize(int id) { return Find(id).size(); }

}  // namespace QvApi
")
