#include "doctor/report/page.h"

#include <algorithm>
#include <utility>

#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

constexpr std::size_t kGap = 2;
// No column but the last grows beyond this share of the page.
constexpr std::size_t kWidestColumn = 32;

std::string_view ColorOf(Paint paint) {
  switch (paint) {
    case Paint::kPlain:
      break;
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
std::vector<std::size_t> ColumnWidths(const Rows& rows, std::size_t indent, std::size_t page) {
  const std::size_t widest = std::min(kWidestColumn, page * kWidestColumn / kPageWidth);
  std::vector<std::size_t> widths(rows.front().size());
  std::size_t used = indent;
  for (std::size_t column = 0; column + 1 < widths.size(); ++column) {
    for (const auto& row : rows) {
      widths[column] = std::max(widths[column], std::min(Columns(row[column].text), widest));
    }
    used += widths[column] + kGap;
  }
  widths.back() = page - used;
  return widths;
}

bool HasWiderThan(const std::vector<std::string>& lines, std::size_t width) {
  return std::ranges::any_of(lines, [width](const std::string& line) { return Columns(line) > width; });
}

// The lines of each cell. What is wider than its column keeps its lines to itself.
std::vector<std::vector<std::string>> CellLines(const std::vector<Cell>& row, const std::vector<std::size_t>& widths) {
  std::vector<std::vector<std::string>> cells;
  std::size_t below = 0;
  std::size_t height = 0;
  for (std::size_t column = 0; column < row.size(); ++column) {
    std::vector<std::string> lines = Wrapped(row[column].text, widths[column]);
    const bool isWide = HasWiderThan(lines, widths[column]);
    const bool isLast = column + 1 == row.size();
    const std::size_t first = isLast && isWide && Columns(lines.front()) > widths[column] ? height : below;
    lines.insert(lines.begin(), first, std::string());
    height = std::max(height, lines.size());
    below = isWide ? height : below;
    cells.push_back(std::move(lines));
  }
  return cells;
}

}  // namespace

std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (Columns(text) > width) {
    const std::size_t fits = BytesOf(text, width);
    std::size_t cut = text.rfind(' ', fits);
    if (cut == std::string_view::npos || cut == 0) {
      cut = std::min(text.find(' ', fits), text.size());
    }
    lines.emplace_back(text.substr(0, cut));
    text.remove_prefix(cut);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (text.empty()) {
      return lines;
    }
  }
  lines.emplace_back(text);
  return lines;
}

void Page::Put(std::string_view text, Paint paint) {
  const std::string_view color = colored_ && !text.empty() ? ColorOf(paint) : "";
  text_ += color;
  text_ += text;
  text_ += color.empty() ? "" : "\033[0m";
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
  for (const std::string& line : Wrapped(text, width_ - indent)) {
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

void Page::Table(const Rows& rows, std::size_t indent) {
  if (rows.empty()) {
    return;
  }
  const std::vector<std::size_t> widths = ColumnWidths(rows, indent, width_);
  for (const auto& row : rows) {
    PutRow(row, widths, indent);
  }
}

void Page::PutRow(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, std::size_t indent) {
  const std::vector<std::vector<std::string>> cells = CellLines(row, widths);
  const std::size_t height = std::ranges::max_element(cells, {}, &std::vector<std::string>::size)->size();
  for (std::size_t line = 0; line < height; ++line) {
    std::size_t blanks = indent;
    for (std::size_t column = 0; column < row.size(); ++column) {
      const std::string text = line < cells[column].size() ? cells[column][line] : std::string();
      if (!text.empty()) {
        text_.append(std::exchange(blanks, 0), ' ');
        Put(text, row[column].paint);
      }
      blanks += widths[column] - std::min(Columns(text), widths[column]) + kGap;
    }
    text_ += '\n';
  }
}

}  // namespace doctor
