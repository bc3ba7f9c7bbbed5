#include "doctor/report/page.h"

#include <algorithm>
#include <utility>

#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

constexpr std::size_t kGap = 2;
// No column but the last grows beyond this; longer cells are broken.
constexpr std::size_t kWidestColumn = 32;

std::string_view ColorOf(Paint paint) {
  switch (paint) {
    case Paint::kPlain:
      return "";
    case Paint::kStrong:
      return "\033[1m";
    case Paint::kGood:
      return "\033[32m";
    case Paint::kBad:
      return "\033[31m";
    case Paint::kOdd:
      return "\033[33m";
    case Paint::kFaint:
      return "\033[2m";
  }
  return "";
}

// How many bytes the first `columns` code points take.
std::size_t BytesOf(std::string_view text, std::size_t columns) {
  std::size_t at = 0;
  for (; at < text.size(); ++at) {
    if ((static_cast<unsigned char>(text[at]) & 0xC0) != 0x80 && columns-- == 0) {
      break;
    }
  }
  return at;
}

// The last column takes what the others leave.
std::vector<std::size_t> ColumnWidths(const std::vector<std::vector<Cell>>& rows, std::size_t indent) {
  std::vector<std::size_t> widths(rows.front().size());
  std::size_t used = indent;
  for (std::size_t column = 0; column + 1 < widths.size(); ++column) {
    for (const auto& row : rows) {
      widths[column] = std::max(widths[column], std::min(Columns(row[column].text), kWidestColumn));
    }
    used += widths[column] + kGap;
  }
  widths.back() = kPageWidth - used;
  return widths;
}

}  // namespace

std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (Columns(text) > width) {
    const std::size_t fits = BytesOf(text, width);
    std::size_t cut = text.rfind(' ', fits);
    if (cut == std::string_view::npos || cut == 0) {
      cut = fits;
    }
    lines.emplace_back(text.substr(0, cut));
    text.remove_prefix(cut);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  }
  lines.emplace_back(text);
  return lines;
}

void Page::Put(std::string_view text, Paint paint) {
  const bool paints = colored_ && paint != Paint::kPlain && !text.empty();
  text_ += paints ? ColorOf(paint) : "";
  text_ += text;
  text_ += paints ? "\033[0m" : "";
}

void Page::Heading(const std::string& title, const std::string& about) {
  text_ += '\n';
  Put(title, Paint::kStrong);
  text_ += '\n';
  if (!about.empty()) {
    Paragraph(about, kGap, Paint::kFaint);
  }
}

void Page::Paragraph(const std::string& text, std::size_t indent, Paint paint) {
  for (const std::string& line : Wrapped(text, kPageWidth - indent)) {
    text_.append(line.empty() ? 0 : indent, ' ');
    Put(line, paint);
    text_ += '\n';
  }
}

void Page::Line(const std::string& text, std::size_t indent) {
  text_.append(indent, ' ');
  text_ += text;
  text_ += '\n';
}

void Page::Table(const std::vector<std::vector<Cell>>& rows, std::size_t indent) {
  if (rows.empty()) {
    return;
  }
  const std::vector<std::size_t> widths = ColumnWidths(rows, indent);
  for (const auto& row : rows) {
    PutRow(row, widths, indent);
  }
}

void Page::PutRow(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, std::size_t indent) {
  std::vector<std::vector<std::string>> broken;
  std::size_t height = 0;
  for (std::size_t column = 0; column < row.size(); ++column) {
    broken.push_back(Wrapped(row[column].text, widths[column]));
    height = std::max(height, broken.back().size());
  }
  for (std::size_t line = 0; line < height; ++line) {
    std::size_t blanks = indent;
    for (std::size_t column = 0; column < row.size(); ++column) {
      const std::string text = line < broken[column].size() ? broken[column][line] : std::string();
      if (!text.empty()) {
        text_.append(std::exchange(blanks, 0), ' ');
        Put(text, row[column].paint);
      }
      blanks += widths[column] - Columns(text) + kGap;
    }
    text_ += '\n';
  }
}

}  // namespace doctor
