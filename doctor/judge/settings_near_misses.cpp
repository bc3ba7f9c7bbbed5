#include <algorithm>
#include <cctype>
#include <functional>
#include <optional>
#include <string_view>

#include "doctor/examine/text.h"
#include "doctor/judge/near_misses.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\f\v";

struct KnownKey {
  std::string name;
  std::string meaning;
};

std::vector<KnownKey> KnownKeys() {
  return {{ToUtf8(netloader::quor::kDotnetRootFolderKey), "runtime root"},
          {ToUtf8(netloader::quor::kLoaderLoggingDirKey), "log folder"}};
}

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool EqualButForCase(std::string_view a, std::string_view b) {
  const auto lower = [](char letter) { return std::tolower(static_cast<unsigned char>(letter)); };
  return std::ranges::equal(a, b, {}, lower, lower);
}

bool IsQuoted(std::string_view value) {
  value = Trimmed(value);
  return value.size() > 1 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
}

std::string Line(const SettingsEntry& entry) {
  return "line " + std::to_string(entry.line);
}

class Looker {
 public:
  explicit Looker(const SettingsReport& report) : report_(report), keys_(KnownKeys()) {}

  Warnings Look() {
    for (const SettingsEntry& entry : report_.entries) {
      LookAtMark(entry);
      LookAtKey(entry);
      LookAtValue(entry);
      LookAtRepetition(entry);
    }
    return std::move(warnings_);
  }

 private:
  static bool HasMark(const SettingsEntry& entry) {
    return entry.line == 1 && (entry.key.empty() ? entry.value : entry.key).starts_with(kByteOrderMark);
  }

  void LookAtMark(const SettingsEntry& entry) {
    if (HasMark(entry)) {
      Warn("byte-order-mark", entry, "the file begins with a byte-order mark, which becomes part of the first key",
           "save the file as UTF-8 without a byte-order mark");
    }
  }

  // The key that was probably meant.
  const KnownKey* Meant(std::string_view key) const {
    const auto found =
        std::ranges::find_if(keys_, [&](const KnownKey& known) { return EqualButForCase(Trimmed(key), known.name); });
    return found != keys_.end() ? &*found : nullptr;
  }

  void LookAtKey(const SettingsEntry& entry) {
    std::string_view key = entry.key;
    if (HasMark(entry) && !key.empty()) {
      key.remove_prefix(kByteOrderMark.size());
    }
    const KnownKey* known = Meant(key);
    if (known == nullptr || key == known->name) {
      return;
    }
    if (Trimmed(key) != key) {
      Warn("blank-around-key", entry, "the key " + Quoted(key) + " has a blank around it, so it is another key",
           "write " + known->name + "= without any blank before the equals sign");
    }
    if (Trimmed(key) != known->name) {
      Warn("wrong-letter-case", entry, "the key " + Quoted(key) + " differs in letter case, so it is another key",
           "write " + known->name);
    }
  }

  void LookAtValue(const SettingsEntry& entry) {
    const KnownKey* known = Meant(entry.key);
    if (known == nullptr || entry.value.empty()) {
      return;
    }
    const char last = entry.value.back();
    if (last == '\r') {
      Warn("carriage-return-at-end", entry,
           "the " + known->meaning + " ends with a carriage return, which is part of it",
           "save the file with plain line ends (LF)");
    } else if (kBlanks.find(last) != std::string_view::npos) {
      Warn("blank-at-end", entry, "the " + known->meaning + " ends with a blank, which is part of it",
           "remove what follows the last letter of the line");
    }
    if (kBlanks.find(entry.value.front()) != std::string_view::npos) {
      Warn("blank-at-start", entry, "the " + known->meaning + " begins with a blank, which is part of it",
           "write the value right after the equals sign");
    }
    if (IsQuoted(entry.value)) {
      Warn("quoted-value", entry, "the " + known->meaning + " stands in quotes, which are part of it",
           "remove the quotes");
    }
  }

  void LookAtRepetition(const SettingsEntry& entry) {
    if (entry.use == LineUse::kReplaced) {
      Warn("key-given-twice", entry,
           "line " + std::to_string(entry.replaced_by) + " sets " + Quoted(entry.key) +
               " again, and the last one counts",
           "remove the line that is not meant");
    }
  }

  void Warn(std::string code, const SettingsEntry& entry, std::string text, std::string cure) {
    warnings_.push_back({std::move(code), Line(entry), std::move(text), std::move(cure)});
  }

  const SettingsReport& report_;
  const std::vector<KnownKey> keys_;
  Warnings warnings_;
};

}  // namespace

Warnings SettingsNearMisses(const SettingsReport& report) {
  return Looker(report).Look();
}

}  // namespace doctor
