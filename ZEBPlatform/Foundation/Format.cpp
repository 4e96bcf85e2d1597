#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/detail/NumberText.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <span>

namespace zeb {

namespace {

/// The number of UTF-16 units of a text: one for each scalar, and one more for each scalar of four
/// bytes.
std::size_t utf16Length(std::string_view utf8) noexcept {
  std::size_t length = 0;
  for (const char byte : utf8) {
    const auto value = static_cast<unsigned char>(byte);
    length += (value & 0xC0) != 0x80;
    length += value >= 0xF0;
  }
  return length;
}

constexpr bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

/// A limit beyond any sensible width, so that a mistaken format does not fill the memory.
constexpr int maxFieldWidth = 4096;

struct Directive {
  std::string flags;
  std::optional<int> width;
  std::optional<int> precision;
  std::size_t integerWidth = sizeof(int);  ///< bytes of an integer that the length modifier names
  char conversion = 0;
  std::string_view text;  ///< the directive as written in the format
};

}  // namespace

class Formatter {
 public:
  Formatter(std::string_view format, std::span<const FormatArgument> arguments)
      : rest_(format), arguments_(arguments) {}

  std::string run() {
    while (!rest_.empty()) {
      const std::size_t percent = std::min(rest_.find('%'), rest_.size());
      output_ += rest_.substr(0, percent);
      rest_.remove_prefix(percent);
      if (!rest_.empty()) printDirective();
    }
    return std::move(output_);
  }

 private:
  /// A decimal number at the front, limited to `maxFieldWidth`.
  std::optional<int> takeNumber() {
    if (rest_.empty() || !isDigit(rest_.front())) return std::nullopt;
    int number = 0;
    while (!rest_.empty() && isDigit(rest_.front())) {
      number = std::min(number * 10 + (rest_.front() - '0'), maxFieldWidth);
      rest_.remove_prefix(1);
    }
    return number;
  }

  bool take(char character) {
    if (!rest_.starts_with(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// A width or precision: digits, or "*" for the next argument.
  std::optional<int> takeNumberOrArgument() {
    if (!take('*')) return takeNumber();
    const FormatArgument* argument = nextArgument(std::nullopt);
    if (!argument || argument->type_ > FormatArgument::Type::Unsigned) return std::nullopt;
    const auto number = static_cast<std::int64_t>(argument->bits_);
    return static_cast<int>(std::clamp<std::int64_t>(number, -maxFieldWidth, maxFieldWidth));
  }

  const FormatArgument* nextArgument(std::optional<int> position) {
    const std::size_t index = position ? static_cast<std::size_t>(*position) - 1 : next_++;
    return index < arguments_.size() ? &arguments_[index] : nullptr;
  }

  void takeLengthModifier(Directive& directive) {
    if (take('h')) {
      directive.integerWidth = take('h') ? 1 : 2;
    } else if (take('l') || take('q') || take('j') || take('z') || take('t')) {
      take('l');
      directive.integerWidth = 8;
    }
  }

  void printDirective() {
    const std::string_view start = rest_;
    rest_.remove_prefix(1);
    if (take('%')) {
      output_ += '%';
      return;
    }
    Directive directive;
    std::optional<int> position;
    const std::string_view afterPercent = rest_;
    if (const std::optional<int> number = takeNumber(); number && *number > 0 && take('$')) {
      position = number;
    } else {
      rest_ = afterPercent;
    }
    while (!rest_.empty() && std::string_view("-+ #0").find(rest_.front()) != rest_.npos) {
      directive.flags += rest_.front();
      rest_.remove_prefix(1);
    }
    directive.width = takeNumberOrArgument();
    if (directive.width && *directive.width < 0) {
      directive.flags += '-';
      directive.width = -*directive.width;
    }
    if (take('.')) directive.precision = std::max(0, takeNumberOrArgument().value_or(0));
    takeLengthModifier(directive);
    if (!rest_.empty()) {
      directive.conversion = rest_.front();
      rest_.remove_prefix(1);
    }
    directive.text = start.substr(0, start.size() - rest_.size());

    const bool known = std::string_view("@diuxXocCsSpfFeEgGaA").find(directive.conversion) !=
                       std::string_view::npos;
    const FormatArgument* argument =
        known && directive.conversion ? nextArgument(position) : nullptr;
    if (!argument) {
      output_ += directive.text;
    } else {
      print(directive, *argument);
    }
  }

  void print(const Directive& directive, const FormatArgument& argument) {
    using Type = FormatArgument::Type;
    switch (argument.type_) {
      case Type::Text:
        return printText(directive, argument.text_);
      case Type::Object:
        return printText(directive, argument.value_->description().utf8());
      case Type::Instance: {
        const auto* object = static_cast<const NSObject*>(argument.pointer_);
        if (directive.conversion == 'p') return printPointer(directive, object);
        return printText(directive, object ? object->description() : "(null)");
      }
      case Type::Pointer:
        return printPointer(directive, argument.pointer_);
      case Type::Number:
        return printNumber(directive, argument.number_);
      case Type::Signed:
      case Type::Unsigned:
        return printInteger(directive, argument);
    }
  }

  void printText(const Directive& directive, std::string text) {
    if (directive.precision && static_cast<std::size_t>(*directive.precision) < text.size()) {
      std::size_t end = static_cast<std::size_t>(*directive.precision);
      while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
      text.resize(end);
    }
    pad(directive, text);
  }
  void printText(const Directive& directive, std::string_view text) {
    printText(directive, std::string(text));
  }

  void pad(const Directive& directive, const std::string& text) {
    const auto width = static_cast<std::size_t>(directive.width.value_or(0));
    const std::size_t length = utf16Length(text);
    const std::size_t fill = length < width ? width - length : 0;
    const bool left = directive.flags.find('-') != std::string::npos;
    if (!left) output_.append(fill, ' ');
    output_ += text;
    if (left) output_.append(fill, ' ');
  }

  void printPointer(const Directive& directive, const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
    pad(directive, text);
  }

  void printInteger(const Directive& directive, const FormatArgument& argument) {
    const bool isSigned = argument.type_ == FormatArgument::Type::Signed;
    const char conversion = directive.conversion;
    if (conversion == 'c' || conversion == 'C') {
      std::string character;
      detail::appendUTF8(character, static_cast<char16_t>(argument.bits_));
      return pad(directive, character);
    }
    if (std::string_view("fFeEgGaA").find(conversion) != std::string_view::npos) {
      return printNumber(directive,
                         isSigned ? static_cast<double>(static_cast<std::int64_t>(argument.bits_))
                                  : static_cast<double>(argument.bits_));
    }
    // An argument is never cut to a narrower directive, only reinterpreted at its own width.
    const std::size_t width =
        std::max<std::size_t>(argument.width_, std::min(directive.integerWidth, sizeof(int)));
    const unsigned shift = 64 - 8 * static_cast<unsigned>(width);
    const std::uint64_t raw = argument.bits_ << shift;
    const bool wantsUnsigned = std::string_view("uxXop").find(conversion) != std::string_view::npos;
    const bool wantsSigned = conversion == 'd' || conversion == 'i';
    if (wantsUnsigned || (!wantsSigned && !isSigned)) {
      const char shown = wantsUnsigned && conversion != 'p' ? conversion : 'u';
      return printWithC(directive, std::string("ll") + shown,
                        static_cast<unsigned long long>(raw >> shift));
    }
    if (!isSigned) {
      return printWithC(directive, "llu", static_cast<unsigned long long>(argument.bits_));
    }
    printWithC(directive, "lld", static_cast<long long>(raw) >> shift);
  }

  void printNumber(const Directive& directive, double number) {
    if (std::string_view("fFeEgGaA").find(directive.conversion) != std::string_view::npos) {
      return printWithC(directive, std::string(1, directive.conversion), number);
    }
    pad(directive, detail::shortestText(number));
  }

  /// Lets the C library print one number, by a directive that this class has assembled.
  template <class Number>
  void printWithC(const Directive& directive, const std::string& conversion, Number number) {
    std::string format = "%" + directive.flags;
    if (directive.width) format += std::to_string(*directive.width);
    if (directive.precision) format += "." + std::to_string(*directive.precision);
    format += conversion;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(nullptr, 0, format.c_str(), number);
    if (length < 0) return;
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), format.c_str(), number);
#pragma GCC diagnostic pop
    text.pop_back();
    output_ += text;
  }

  std::string_view rest_;
  std::span<const FormatArgument> arguments_;
  std::size_t next_ = 0;
  std::string output_;
};

std::string formattedText(std::string_view format,
                          std::initializer_list<FormatArgument> arguments) {
  return Formatter(format, std::span(arguments.begin(), arguments.size())).run();
}

}  // namespace zeb
