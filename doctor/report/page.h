// A page of text: aligned, coloured if asked, words and paths whole.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace doctor {

/// Columns of a page that nobody reads on a terminal.
inline constexpr std::size_t kPageWidth = 100;
/// Of what belongs to the line above it.
inline constexpr std::size_t kIndent = 2;
/// Rows of a list. Of longer ones the beginning is shown; the JSON holds all of it.
inline constexpr std::size_t kLongestList = 40;

enum class Paint { kPlain, kStrong, kGood, kBad, kOdd, kFaint };

/// A cell of a table: printable text and its colour.
struct Cell {
  std::string text;
  Paint paint = Paint::kPlain;
};

using Rows = std::vector<std::vector<Cell>>;

/// What a value is called in a table, and its colour.
template <typename Value>
struct Shown {
  Value value;
  std::string_view code;
  Paint paint;
};

/// Collects a page. All texts must be printable (see text.h).
class Page {
 public:
  /// `width` is at least 60.
  explicit Page(bool colored, std::size_t width = kPageWidth) : colored_(colored), width_(width) {}

  /// A heading with what it is about behind it, after an empty line.
  void Heading(const std::string& title, const std::string& about);

  /// Text with an indentation, broken between words. A word longer than a line stands whole on a line of its own.
  void Paragraph(const std::string& text, std::size_t indent, Paint paint = Paint::kPlain);

  /// Text with an indentation, in one line however long it is: to be copied.
  void Line(const std::string& text, std::size_t indent);

  /// Rows of equally many cells, the columns aligned; what does not fit its column is broken between words. Where a
  /// word does not fit, what is right of it goes on below.
  void Table(const Rows& rows, std::size_t indent);

  const std::string& Text() const { return text_; }

 private:
  void Put(std::string_view text, Paint paint);
  void PutRow(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, std::size_t indent);

  bool colored_;
  std::size_t width_;
  std::string text_;
};

/// The text in lines of at most `width` columns, but for longer words, which stand whole.
std::vector<std::string> Wrapped(std::string_view text, std::size_t width);

}  // namespace doctor
