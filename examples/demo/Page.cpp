// SPDX-License-Identifier: MIT
#include "Page.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <stdexcept>

#include "PageStyle.h"

namespace Demo {

namespace {

// Crops are shown this much larger than they are.
constexpr std::size_t kZoom = 4;

// Text as HTML, safe between tags and in attributes.
std::string Escape(const std::string& text) {
  std::string result;
  for (const char c : text) switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  return result;
}

std::string Tag(const std::string& tag, const std::string& text) {
  return "<" + tag + ">" + Escape(text) + "</" + tag + ">";
}

void WriteCrop(std::ostream& out, const Crop& crop) {
  out << "<figure><img class=\"crop\" loading=\"lazy\" src=\"" << Escape(crop.file) << "\" width=\""
      << crop.width * kZoom << "\" height=\"" << crop.height * kZoom << "\" alt=\""
      << Escape(crop.caption) << "\">" << Tag("figcaption", crop.caption) << "</figure>\n";
}

void WriteFacts(std::ostream& out, const Figure& figure) {
  out << "<ul class=\"facts\">\n";
  for (const std::string& setting : figure.settings)
    out << "<li><code>" << Escape(setting) << "</code></li>\n";
  if (figure.milliseconds)
    out << "<li><b>" << Decimal(*figure.milliseconds, 2) << " ms</b> per frame</li>\n";
  if (figure.psnr) out << "<li><b>" << Decimal(*figure.psnr, 2) << " dB</b> PSNR</li>\n";
  for (const Link& link : figure.links)
    out << "<li><a href=\"" << Escape(link.file) << "\">" << Escape(link.text) << "</a></li>\n";
  out << "</ul>\n";
}

void WriteFigure(std::ostream& out, const Figure& figure) {
  out << "<article>\n<div class=\"whole\">\n" << Tag("h3", figure.title) << '\n';
  if (!figure.text.empty()) out << Tag("p", figure.text) << '\n';
  const std::string file = Escape(figure.file);
  if (!file.empty())
    out << "<a href=\"" << file << "\"><img loading=\"lazy\" src=\"" << file << "\" alt=\""
        << Escape(figure.title) << "\"></a>\n";
  WriteFacts(out, figure);
  out << "</div>\n<div class=\"crops\">\n";
  for (const Crop& crop : figure.crops) WriteCrop(out, crop);
  out << "</div>\n</article>\n";
}

void WriteRow(std::ostream& out, const std::vector<std::string>& cells, const std::string& tag) {
  out << "<tr>";
  for (const std::string& cell : cells) out << Tag(tag, cell);
  out << "</tr>\n";
}

void WriteTable(std::ostream& out, const Table& table) {
  if (table.rows.empty()) return;
  out << "<div class=\"table\"><table>\n";
  WriteRow(out, table.head, "th");
  for (const std::vector<std::string>& row : table.rows) WriteRow(out, row, "td");
  out << "</table></div>\n";
}

void WriteChecks(std::ostream& out, const std::vector<Check>& checks) {
  if (checks.empty()) return;
  out << "<ul class=\"checks\">\n";
  for (const Check& check : checks)
    out << "<li class=\"" << (check.holds ? "holds" : "fails") << "\">" << Escape(check.text)
        << (check.holds ? "" : " (does not hold)") << "</li>\n";
  out << "</ul>\n";
}

// Columns of a sheet whose last row is full if that can be had.
std::size_t Columns(std::size_t figures) {
  if (figures <= 4) return figures;
  return figures % 3 == 0 && figures % 4 != 0 ? 3 : 4;
}

void WriteSection(std::ostream& out, const Section& section) {
  out << "<section id=\"" << Escape(section.id) << "\">\n"
      << Tag("h2", section.title) << '\n'
      << Tag("p", section.text) << '\n';
  WriteTable(out, section.table);
  WriteChecks(out, section.checks);
  if (section.sheet)
    out << "<div class=\"sheet\" style=\"--columns: " << Columns(section.figures.size()) << "\">\n";
  else
    out << "<div>\n";
  for (const Figure& figure : section.figures) WriteFigure(out, figure);
  out << "</div>\n</section>\n";
}

void WriteHead(std::ostream& out, const Page& page) {
  out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      << Tag("title", page.title) << "\n<style>" << kPageStyle << "</style>\n</head>\n<body>\n"
      << "<header>\n"
      << Tag("h1", page.title) << '\n'
      << Tag("p", page.text) << "\n<nav>";
  for (const Section& section : page.sections)
    out << "<a href=\"#" << Escape(section.id) << "\">" << Escape(section.title) << "</a>";
  out << "</nav>\n</header>\n<main>\n";
}

}  // namespace

std::string Decimal(double value, int digits) {
  if (std::isinf(value)) return "\u221e";
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

void WritePage(const Page& page, const std::filesystem::path& fileName) {
  std::ofstream out(fileName);
  WriteHead(out, page);
  for (const Section& section : page.sections) WriteSection(out, section);
  out << "</main>\n</body>\n</html>\n";
  out.close();
  if (!out) throw std::runtime_error("File " + fileName.string() + " is unwritable.");
}

}  // namespace Demo
