// The bounded 16-bit formatter: a parse pass that learns every argument's type, one read of
// the arguments in position order, and a render pass.
#include "core/services/format16.h"

#include "core/platform/code_page.h"
#include "core/services/text_convert.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

// The largest argument position, as with the Windows positional formatter.
constexpr int kMaxArgs = 100;

enum class ArgType : unsigned char {
    None,
    Int,
    Long,
    LongLong,
    SizeT,
    IntMax,
    PtrDiff,
    Double,
    LongDouble,
    WideText,
    NarrowText,
    Pointer,
};

union ArgValue {
    long long integer;
    double real;
    long double longReal;
    const q5_WCHAR* wide;
    const char* narrow;
    const void* pointer;
};

enum class Size : unsigned char {
    None,
    Char,
    Short,
    Long,
    LongLong,
    Int32,
    Int64,
    SizeT,
    IntMax,
    PtrDiff,
    LongDouble,
    Wide
};

struct Conversion {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1; // -1: none given
    int widthArg = -1;  // argument slots, 0-based; -1: none
    int precisionArg = -1;
    int valueArg = -1;
    Size size = Size::None;
    char conversion = 0;
};

// Sequential or positional argument numbering; the first conversion decides.
struct Numbering {
    enum class Mode { Unknown, Sequential, Positional } mode = Mode::Unknown;
    int next = 0;

    bool Use(Mode wanted) {
        if (mode == Mode::Unknown) mode = wanted;
        return mode == wanted;
    }
};

bool IsDigit(q5_WCHAR c) {
    return c >= u'0' && c <= u'9';
}

// Reads a decimal number; false when it overflows an int.
bool ReadNumber(const q5_WCHAR*& p, int& value) {
    long long n = 0;
    for (; IsDigit(*p); ++p) {
        n = n * 10 + (*p - u'0');
        if (n > INT_MAX) return false;
    }
    value = static_cast<int>(n);
    return true;
}

// Reads "n$" at p when it is there; 0 when it is not, -1 when it is malformed.
int ReadPosition(const q5_WCHAR*& p) {
    if (*p < u'1' || *p > u'9') return 0;
    const q5_WCHAR* q = p;
    int n = 0;
    if (!ReadNumber(q, n) || *q != u'$') return 0;
    if (n > kMaxArgs) return -1;
    p = q + 1;
    return n;
}

// The argument slot of a value, a '*' width or a '*' precision; -1 on a numbering error.
int TakeSlot(const q5_WCHAR*& p, Numbering& numbering, bool allowsPosition) {
    const int position = allowsPosition ? ReadPosition(p) : 0;
    if (position < 0) return -1;
    if (position > 0) return numbering.Use(Numbering::Mode::Positional) ? position - 1 : -1;
    if (!numbering.Use(Numbering::Mode::Sequential) || numbering.next >= kMaxArgs) return -1;
    return numbering.next++;
}

// Parses one conversion after its '%'; returns the position after it, or null when invalid.
const q5_WCHAR* ParseConversion(const q5_WCHAR* p, Conversion& conv, Numbering& numbering) {
    const int position = ReadPosition(p);
    if (position < 0) return nullptr;
    if (position > 0 && !numbering.Use(Numbering::Mode::Positional)) return nullptr;

    for (;; ++p) {
        if (*p == u'-')
            conv.left = true;
        else if (*p == u'+')
            conv.plus = true;
        else if (*p == u' ')
            conv.space = true;
        else if (*p == u'#')
            conv.alternate = true;
        else if (*p == u'0')
            conv.zero = true;
        else
            break;
    }
    if (*p == u'*') {
        ++p;
        conv.widthArg = TakeSlot(p, numbering, true);
        if (conv.widthArg < 0) return nullptr;
    } else if (!ReadNumber(p, conv.width)) {
        return nullptr;
    }
    if (*p == u'.') {
        ++p;
        conv.precision = 0;
        if (*p == u'*') {
            ++p;
            conv.precisionArg = TakeSlot(p, numbering, true);
            if (conv.precisionArg < 0) return nullptr;
        } else if (!ReadNumber(p, conv.precision)) {
            return nullptr;
        }
    }

    if (p[0] == u'h' && p[1] == u'h') {
        conv.size = Size::Char;
        p += 2;
    } else if (p[0] == u'l' && p[1] == u'l') {
        conv.size = Size::LongLong;
        p += 2;
    } else if (p[0] == u'I' && p[1] == u'6' && p[2] == u'4') {
        conv.size = Size::Int64;
        p += 3;
    } else if (p[0] == u'I' && p[1] == u'3' && p[2] == u'2') {
        conv.size = Size::Int32;
        p += 3;
    } else {
        switch (*p) {
        case u'h':
            conv.size = Size::Short;
            break;
        case u'l':
            conv.size = Size::Long;
            break;
        case u'I':
            conv.size = Size::SizeT;
            break;
        case u'z':
            conv.size = Size::SizeT;
            break;
        case u'j':
            conv.size = Size::IntMax;
            break;
        case u't':
            conv.size = Size::PtrDiff;
            break;
        case u'L':
            conv.size = Size::LongDouble;
            break;
        case u'w':
            conv.size = Size::Wide;
            break;
        default:
            break;
        }
        if (conv.size != Size::None) ++p;
    }

    if (*p == 0 || *p > 0x7F) return nullptr;
    conv.conversion = static_cast<char>(*p++);
    if (position > 0) {
        conv.valueArg = position - 1;
    } else {
        conv.valueArg = TakeSlot(p, numbering, false);
        if (conv.valueArg < 0) return nullptr;
    }
    return p;
}

ArgType IntegerType(Size size) {
    switch (size) {
    case Size::None:
    case Size::Char:
    case Size::Short:
    case Size::Int32:
        return ArgType::Int;
    case Size::Long:
        return ArgType::Long;
    case Size::LongLong:
    case Size::Int64:
        return ArgType::LongLong;
    case Size::SizeT:
        return ArgType::SizeT;
    case Size::IntMax:
        return ArgType::IntMax;
    case Size::PtrDiff:
        return ArgType::PtrDiff;
    default:
        return ArgType::None;
    }
}

// The argument type a conversion reads; None when the combination is not supported.
ArgType ValueType(const Conversion& conv) {
    switch (conv.conversion) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
        return IntegerType(conv.size);
    case 'c':
    case 'C':
        return (conv.size == Size::None || conv.size == Size::Short || conv.size == Size::Long ||
                conv.size == Size::Wide)
                   ? ArgType::Int
                   : ArgType::None;
    case 's':
        if (conv.size == Size::Short) return ArgType::NarrowText;
        return (conv.size == Size::None || conv.size == Size::Long || conv.size == Size::Wide)
                   ? ArgType::WideText
                   : ArgType::None;
    case 'S':
        if (conv.size == Size::Long || conv.size == Size::Wide) return ArgType::WideText;
        return (conv.size == Size::None || conv.size == Size::Short) ? ArgType::NarrowText
                                                                     : ArgType::None;
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
        if (conv.size == Size::LongDouble) return ArgType::LongDouble;
        return (conv.size == Size::None || conv.size == Size::Long) ? ArgType::Double
                                                                    : ArgType::None;
    case 'p':
        return conv.size == Size::None ? ArgType::Pointer : ArgType::None;
    default:
        return ArgType::None;
    }
}

// True when the conversion writes a wide character or text (as opposed to a narrow one).
bool IsWideText(const Conversion& conv) {
    const bool upper = conv.conversion == 'C' || conv.conversion == 'S';
    if (conv.size == Size::Short) return false;
    if (conv.size == Size::Long || conv.size == Size::Wide) return true;
    return !upper;
}

void Fetch(ArgType type, std::va_list& args, ArgValue& value) {
    switch (type) {
    case ArgType::Int:
        value.integer = va_arg(args, int);
        break;
    case ArgType::Long:
        value.integer = va_arg(args, long);
        break;
    case ArgType::LongLong:
        value.integer = va_arg(args, long long);
        break;
    case ArgType::SizeT:
        value.integer = static_cast<long long>(va_arg(args, std::size_t));
        break;
    case ArgType::IntMax:
        value.integer = static_cast<long long>(va_arg(args, std::intmax_t));
        break;
    case ArgType::PtrDiff:
        value.integer = va_arg(args, std::ptrdiff_t);
        break;
    case ArgType::Double:
        value.real = va_arg(args, double);
        break;
    case ArgType::LongDouble:
        value.longReal = va_arg(args, long double);
        break;
    case ArgType::WideText:
        value.wide = va_arg(args, const q5_WCHAR*);
        break;
    case ArgType::NarrowText:
        value.narrow = va_arg(args, const char*);
        break;
    case ArgType::Pointer:
        value.pointer = va_arg(args, const void*);
        break;
    case ArgType::None:
        break;
    }
}

// Collects the output: writes what fits before the terminator and counts everything.
class Sink {
public:
    Sink(q5_WCHAR* buffer, std::size_t capacity) : buffer_(buffer), capacity_(capacity) {}

    void Put(q5_WCHAR unit) {
        if (count_ + 1 < capacity_) buffer_[count_] = unit;
        ++count_;
    }
    void Repeat(q5_WCHAR unit, long long times) {
        for (; times > 0; --times) Put(unit);
    }
    void PutAscii(const char* text, std::size_t length) {
        for (std::size_t i = 0; i < length; ++i) Put(static_cast<unsigned char>(text[i]));
    }
    std::size_t Count() const { return count_; }
    void Terminate(std::size_t at) {
        if (buffer_ != nullptr && capacity_ > 0) buffer_[at < capacity_ ? at : capacity_ - 1] = 0;
    }

private:
    q5_WCHAR* buffer_;
    std::size_t capacity_;
    std::size_t count_ = 0;
};

// The resolved width and precision of one conversion; a negative '*' width means '-'.
struct Layout {
    bool left;
    long long width;
    int precision;
};

Layout Resolve(const Conversion& conv, const ArgValue* values) {
    Layout layout{conv.left, conv.width, conv.precision};
    if (conv.widthArg >= 0) {
        const long long width = static_cast<int>(values[conv.widthArg].integer);
        layout.left = layout.left || width < 0;
        layout.width = width < 0 ? -width : width;
    }
    if (conv.precisionArg >= 0) {
        const int precision = static_cast<int>(values[conv.precisionArg].integer);
        layout.precision = precision < 0 ? -1 : precision;
    }
    return layout;
}

int SizeBits(Size size) {
    switch (size) {
    case Size::Char:
        return 8;
    case Size::Short:
        return 16;
    case Size::Long:
        return static_cast<int>(sizeof(long) * CHAR_BIT);
    case Size::LongLong:
    case Size::Int64:
    case Size::IntMax:
        return 64;
    case Size::SizeT:
    case Size::PtrDiff:
        return static_cast<int>(sizeof(std::size_t) * CHAR_BIT);
    default:
        return 32;
    }
}

void RenderInteger(Sink& out, const Conversion& conv, const Layout& layout,
                   unsigned long long raw) {
    const int bits = conv.conversion == 'p' ? 64 : SizeBits(conv.size);
    const unsigned long long mask = bits == 64 ? ~0ULL : (1ULL << bits) - 1;
    const bool isSigned = conv.conversion == 'd' || conv.conversion == 'i';
    unsigned long long magnitude = raw & mask;
    char sign = 0;
    if (isSigned) {
        const unsigned long long top = 1ULL << (bits - 1);
        if (magnitude & top) {
            magnitude = (~magnitude + 1) & mask;
            sign = '-';
        } else if (conv.plus) {
            sign = '+';
        } else if (conv.space) {
            sign = ' ';
        }
    }

    const unsigned base = conv.conversion == 'o'                 ? 8
                          : (isSigned || conv.conversion == 'u') ? 10
                                                                 : 16;
    const char* digitSet = (conv.conversion == 'X' || conv.conversion == 'p') ? "0123456789ABCDEF"
                                                                              : "0123456789abcdef";
    char digits[24];
    int length = 0;
    for (unsigned long long v = magnitude; v != 0; v /= base) digits[length++] = digitSet[v % base];

    int precision = layout.precision;
    if (conv.conversion == 'p' && precision < 0) precision = static_cast<int>(sizeof(void*) * 2);
    const int minimum = precision < 0 ? 1 : precision;
    int zeros = minimum > length ? minimum - length : 0;
    // '#' with octal makes the first digit a zero.
    if (conv.conversion == 'o' && conv.alternate && zeros == 0 &&
        (length == 0 || digits[length - 1] != '0'))
        zeros = 1;
    const char* prefix = "";
    if (conv.alternate && magnitude != 0) {
        if (conv.conversion == 'x') prefix = "0x";
        if (conv.conversion == 'X' || conv.conversion == 'p') prefix = "0X";
    }

    const long long body =
        (sign ? 1 : 0) + static_cast<long long>(std::strlen(prefix)) + zeros + length;
    const long long padding = layout.width > body ? layout.width - body : 0;
    const bool zeroPad = conv.zero && !layout.left && precision < 0;
    if (!layout.left && !zeroPad) out.Repeat(u' ', padding);
    if (sign) out.Put(static_cast<q5_WCHAR>(sign));
    out.PutAscii(prefix, std::strlen(prefix));
    if (zeroPad) out.Repeat(u'0', padding);
    out.Repeat(u'0', zeros);
    while (length > 0) out.Put(static_cast<unsigned char>(digits[--length]));
    if (layout.left) out.Repeat(u' ', padding);
}

void RenderUnits(Sink& out, const Layout& layout, const q5_WCHAR* text, std::size_t length) {
    const long long padding = layout.width > static_cast<long long>(length)
                                  ? layout.width - static_cast<long long>(length)
                                  : 0;
    if (!layout.left) out.Repeat(u' ', padding);
    for (std::size_t i = 0; i < length; ++i) out.Put(text[i]);
    if (layout.left) out.Repeat(u' ', padding);
}

std::size_t BoundedLength(const q5_WCHAR* text, int precision) {
    std::size_t n = 0;
    while ((precision < 0 || n < static_cast<std::size_t>(precision)) && text[n] != 0) ++n;
    return n;
}

void RenderWideText(Sink& out, const Layout& layout, const q5_WCHAR* text) {
    if (text == nullptr) text = u"(null)";
    RenderUnits(out, layout, text, BoundedLength(text, layout.precision));
}

void RenderNarrowText(Sink& out, const Layout& layout, const char* text) {
    if (text == nullptr) text = "(null)";
    const auto codePage = static_cast<std::uint32_t>(q5GetNarrowCodePage());
    const int length = static_cast<int>(std::strlen(text));
    std::u16string wide;
    if (length > 0) {
        const int needed = q5plat::MultiByteToWide(codePage, 0, text, length, nullptr, 0);
        wide.resize(static_cast<std::size_t>(needed));
        if (needed > 0) q5plat::MultiByteToWide(codePage, 0, text, length, wide.data(), needed);
    }
    RenderUnits(out, layout, wide.c_str(), BoundedLength(wide.c_str(), layout.precision));
}

void RenderCharacter(Sink& out, const Conversion& conv, const Layout& layout, long long value) {
    q5_WCHAR unit = static_cast<q5_WCHAR>(value);
    if (!IsWideText(conv)) {
        const char byte = static_cast<char>(value);
        const auto codePage = static_cast<std::uint32_t>(q5GetNarrowCodePage());
        if (q5plat::MultiByteToWide(codePage, 0, &byte, 1, &unit, 1) != 1) unit = 0xFFFD;
    }
    RenderUnits(out, layout, &unit, 1);
}

// Keeps two exponent digits where a C library writes three, so output matches everywhere.
void TrimExponent(std::string& text) {
    const std::size_t e = text.find_first_of("eE");
    if (e == std::string::npos || e + 2 >= text.size()) return;
    std::size_t first = e + 2;
    while (text.size() - first > 2 && text[first] == '0') text.erase(first, 1);
}

template <typename Real>
void RenderReal(Sink& out, const Conversion& conv, const Layout& layout, Real value) {
    // The C library writes the digits; width and padding are applied here.
    std::string format = "%";
    if (conv.plus) format += '+';
    if (conv.space) format += ' ';
    if (conv.alternate) format += '#';
    if (layout.precision >= 0) format += "." + std::to_string(layout.precision);
    if constexpr (std::is_same_v<Real, long double>) format += 'L';
    format += conv.conversion;

    char local[512];
    std::string text;
    const int needed = std::snprintf(local, sizeof local, format.c_str(), value);
    if (needed < 0) return;
    if (static_cast<std::size_t>(needed) < sizeof local) {
        text.assign(local, static_cast<std::size_t>(needed));
    } else {
        text.resize(static_cast<std::size_t>(needed) + 1);
        std::snprintf(text.data(), text.size(), format.c_str(), value);
        text.resize(static_cast<std::size_t>(needed));
    }
    TrimExponent(text);

    const std::size_t signLength =
        (!text.empty() && (text[0] == '-' || text[0] == '+' || text[0] == ' ')) ? 1 : 0;
    const bool finite =
        text.size() > signLength &&
        ((text[signLength] >= '0' && text[signLength] <= '9') || text[signLength] == '.');
    const long long length = static_cast<long long>(text.size());
    const long long padding = layout.width > length ? layout.width - length : 0;
    const bool zeroPad = conv.zero && !layout.left && finite;
    if (!layout.left && !zeroPad) out.Repeat(u' ', padding);
    out.PutAscii(text.data(), signLength);
    if (zeroPad) out.Repeat(u'0', padding);
    out.PutAscii(text.data() + signLength, text.size() - signLength);
    if (layout.left) out.Repeat(u' ', padding);
}

void Render(Sink& out, const Conversion& conv, const ArgValue* values) {
    const Layout layout = Resolve(conv, values);
    const ArgValue& value = values[conv.valueArg];
    switch (ValueType(conv)) {
    case ArgType::Double:
        RenderReal(out, conv, layout, value.real);
        break;
    case ArgType::LongDouble:
        RenderReal(out, conv, layout, value.longReal);
        break;
    case ArgType::WideText:
        RenderWideText(out, layout, value.wide);
        break;
    case ArgType::NarrowText:
        RenderNarrowText(out, layout, value.narrow);
        break;
    case ArgType::Pointer:
        RenderInteger(out, conv, layout, reinterpret_cast<std::uintptr_t>(value.pointer));
        break;
    default:
        if (conv.conversion == 'c' || conv.conversion == 'C')
            RenderCharacter(out, conv, layout, value.integer);
        else
            RenderInteger(out, conv, layout, static_cast<unsigned long long>(value.integer));
        break;
    }
}

// Records the type of one argument slot; false when a slot is used with two types.
bool Claim(ArgType* types, int slot, ArgType type, int& count) {
    if (type == ArgType::None) return false;
    if (types[slot] != ArgType::None && types[slot] != type) return false;
    types[slot] = type;
    if (slot + 1 > count) count = slot + 1;
    return true;
}

int Fail(Sink& out) {
    out.Terminate(0);
    return -1;
}

} // namespace

int q5vsprintf(q5_WCHAR* buffer, std::size_t capacity, const q5_WCHAR* format, std::va_list args) {
    Sink out(buffer, capacity);
    if (format == nullptr || (buffer == nullptr && capacity > 0)) return Fail(out);

    // First pass: the type of every argument.
    ArgType types[kMaxArgs] = {};
    int count = 0;
    Numbering numbering;
    for (const q5_WCHAR* p = format; *p != 0;) {
        if (*p++ != u'%') continue;
        if (*p == u'%') {
            ++p;
            continue;
        }
        Conversion conv;
        p = ParseConversion(p, conv, numbering);
        if (p == nullptr) return Fail(out);
        if (conv.widthArg >= 0 && !Claim(types, conv.widthArg, ArgType::Int, count))
            return Fail(out);
        if (conv.precisionArg >= 0 && !Claim(types, conv.precisionArg, ArgType::Int, count))
            return Fail(out);
        if (!Claim(types, conv.valueArg, ValueType(conv), count)) return Fail(out);
    }

    // The arguments, read in position order; a gap leaves a type unknown.
    ArgValue values[kMaxArgs];
    std::va_list list;
    va_copy(list, args);
    for (int i = 0; i < count; ++i) {
        if (types[i] == ArgType::None) {
            va_end(list);
            return Fail(out);
        }
        Fetch(types[i], list, values[i]);
    }
    va_end(list);

    // Second pass: the output.
    numbering = Numbering{};
    for (const q5_WCHAR* p = format; *p != 0;) {
        if (*p != u'%') {
            out.Put(*p++);
            continue;
        }
        ++p;
        if (*p == u'%') {
            out.Put(*p++);
            continue;
        }
        Conversion conv;
        p = ParseConversion(p, conv, numbering);
        Render(out, conv, values);
    }

    if (out.Count() > static_cast<std::size_t>(INT_MAX)) return Fail(out);
    out.Terminate(out.Count());
    return static_cast<int>(out.Count());
}

int q5sprintf(q5_WCHAR* buffer, std::size_t capacity, const q5_WCHAR* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int result = q5vsprintf(buffer, capacity, format, args);
    va_end(args);
    return result;
}
