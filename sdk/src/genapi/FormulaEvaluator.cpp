#include "genapi/Formula.h"

#include <cmath>
#include <limits>

namespace Norvane::GenApi {

namespace {

[[noreturn]] void DivisionByZero() {
    throw FormulaError("the formula divides by zero");
}

std::uint64_t Bits(std::int64_t value) {
    return static_cast<std::uint64_t>(value);
}
std::int64_t Signed(std::uint64_t bits) {
    return static_cast<std::int64_t>(bits);
}

/// Double to 64 bits where a result outside them is clamped: bit operations on floats.
std::int64_t ClampToInteger(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= 9223372036854775808.0) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value < -9223372036854775808.0) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

std::int64_t ShiftLeft(std::int64_t value, std::int64_t by) {
    return by < 0 || by > 63 ? 0 : Signed(Bits(value) << by);
}
std::int64_t ShiftRight(std::int64_t value, std::int64_t by) {
    if (by < 0 || by > 63) {
        return value < 0 ? -1 : 0;
    }
    return value >> by;
}

std::int64_t IntegerPower(std::int64_t base, std::int64_t exponent) {
    if (exponent < 0) {
        if (base == 0) {
            DivisionByZero();
        }
        return base == 1 ? 1 : base == -1 ? (exponent % 2 ? -1 : 1) : 0;
    }
    std::uint64_t result = 1;
    for (std::uint64_t square = Bits(base); exponent != 0; exponent >>= 1, square *= square) {
        if (exponent & 1) {
            result *= square;
        }
    }
    return Signed(result);
}

double RoundTo(double value, double digits) {
    const double scale = std::pow(10.0, std::trunc(digits));
    const double rounded = std::round(value * scale) / scale;
    return std::isfinite(rounded) ? rounded : value;
}

double Function(Op op, double x) {
    switch (op) {
    case Op::Sqrt:
        return std::sqrt(x);
    case Op::Exp:
        return std::exp(x);
    case Op::Ln:
        return std::log(x);
    case Op::Lg:
        return std::log10(x);
    case Op::Sin:
        return std::sin(x);
    case Op::Cos:
        return std::cos(x);
    case Op::Tan:
        return std::tan(x);
    case Op::Asin:
        return std::asin(x);
    case Op::Acos:
        return std::acos(x);
    case Op::Atan:
        return std::atan(x);
    case Op::Trunc:
        return std::trunc(x);
    case Op::Floor:
        return std::floor(x);
    case Op::Ceil:
        return std::ceil(x);
    default:
        return std::round(x);
    }
}

/// The arithmetic in which the two kinds of formula differ.
struct IntegerRules {
    static std::int64_t Unary(Op op, std::int64_t a) {
        switch (op) {
        case Op::Negate:
            return Signed(0 - Bits(a));
        case Op::Complement:
            return ~a;
        case Op::Sgn:
            return a > 0 ? 1 : a < 0 ? -1 : 0;
        case Op::Abs:
            return a < 0 ? Signed(0 - Bits(a)) : a;
        case Op::Trunc:
        case Op::Floor:
        case Op::Ceil:
        case Op::Round:
            return a;
        default:
            return TruncateToInteger(Function(op, static_cast<double>(a)));
        }
    }
    static std::int64_t Binary(Op op, std::int64_t a, std::int64_t b) {
        switch (op) {
        case Op::Add:
            return Signed(Bits(a) + Bits(b));
        case Op::Subtract:
            return Signed(Bits(a) - Bits(b));
        case Op::Multiply:
            return Signed(Bits(a) * Bits(b));
        case Op::Divide:
        case Op::Remainder:
            if (b == 0) {
                DivisionByZero();
            }
            if (b == -1) { // the one quotient that 64 bits cannot hold
                return op == Op::Divide ? Signed(0 - Bits(a)) : 0;
            }
            return op == Op::Divide ? a / b : a % b;
        case Op::Power:
            return IntegerPower(a, b);
        case Op::BitAnd:
            return a & b;
        case Op::BitOr:
            return a | b;
        case Op::BitXor:
            return a ^ b;
        case Op::ShiftLeft:
            return ShiftLeft(a, b);
        case Op::ShiftRight:
            return ShiftRight(a, b);
        default: // RoundTo: tens, hundreds, ... for negative digits
            return b >= 0 ? a : TruncateToInteger(RoundTo(static_cast<double>(a), static_cast<double>(b)));
        }
    }
};

struct FloatRules {
    static double Unary(Op op, double a) {
        switch (op) {
        case Op::Negate:
            return -a;
        case Op::Complement:
            return static_cast<double>(~ClampToInteger(a));
        case Op::Sgn:
            return a > 0 ? 1 : a < 0 ? -1 : 0;
        case Op::Abs:
            return std::abs(a);
        default:
            return Function(op, a);
        }
    }
    static double Binary(Op op, double a, double b) {
        const auto ints = [&](auto&& apply) {
            return static_cast<double>(apply(ClampToInteger(a), ClampToInteger(b)));
        };
        using I = std::int64_t;
        switch (op) {
        case Op::Add:
            return a + b;
        case Op::Subtract:
            return a - b;
        case Op::Multiply:
            return a * b;
        case Op::Divide:
        case Op::Remainder:
            if (b == 0) {
                DivisionByZero();
            }
            return op == Op::Divide ? a / b : std::fmod(a, b);
        case Op::Power:
            return std::pow(a, b);
        case Op::BitAnd:
            return ints([](I x, I y) { return x & y; });
        case Op::BitOr:
            return ints([](I x, I y) { return x | y; });
        case Op::BitXor:
            return ints([](I x, I y) { return x ^ y; });
        case Op::ShiftLeft:
            return ints([](I x, I y) { return ShiftLeft(x, y); });
        case Op::ShiftRight:
            return ints([](I x, I y) { return ShiftRight(x, y); });
        default:
            return RoundTo(a, b);
        }
    }
};

template <class T>
struct RulesOf;
template <>
struct RulesOf<std::int64_t> {
    using Type = IntegerRules;
};
template <>
struct RulesOf<double> {
    using Type = FloatRules;
};

} // namespace

std::int64_t TruncateToInteger(double value) {
    if (!(value >= -9223372036854775808.0 && value < 9223372036854775808.0)) {
        throw FormulaError("the result is outside the range of 64-bit integers");
    }
    return static_cast<std::int64_t>(value);
}

std::int64_t RoundToInteger(double value) {
    return TruncateToInteger(std::round(value));
}

/// One evaluation: the values of variables and expressions that it has met so far.
template <class T, class Load>
class FormulaMachine {
public:
    FormulaMachine(const Formula& formula, Load load, void* context)
        : m_formula(formula), m_load(load), m_context(context) {}

    // The parser has counted what each instruction takes and leaves, which the analyzer cannot know.
    // NOLINTBEGIN(clang-analyzer-core.*)
    T Run(std::uint32_t program) {
        using Rules = typename RulesOf<T>::Type;
        const auto& code = m_formula.m_programs[program].code;
        T stack[Formula::kStack + 1]; // the first place lies below the bottom
        T* top = stack;
        for (std::size_t at = 0; at < code.size(); ++at) {
            const auto [op, operand] = code[at];
            switch (op) {
            case Op::Number:
                if constexpr (std::is_same_v<T, double>) {
                    *++top = m_formula.m_numbers[operand].real;
                } else {
                    *++top = m_formula.m_numbers[operand].integer;
                }
                break;
            case Op::Slot:
                *++top = Slot(operand);
                break;
            case Op::Jump:
                at = operand - 1;
                break;
            case Op::JumpIfZero:
                if (*top-- == 0) {
                    at = operand - 1;
                }
                break;
            case Op::AndJump:
            case Op::OrJump:
                if ((*top != 0) == (op == Op::OrJump)) {
                    *top = op == Op::OrJump;
                    at = operand - 1;
                } else {
                    --top;
                }
                break;
            case Op::Truth:
                *top = *top != 0;
                break;
            case Op::Not:
                *top = *top == 0;
                break;
            case Op::Equal:
                --top;
                *top = top[0] == top[1];
                break;
            case Op::NotEqual:
                --top;
                *top = top[0] != top[1];
                break;
            case Op::Less:
                --top;
                *top = top[0] < top[1];
                break;
            case Op::LessEqual:
                --top;
                *top = top[0] <= top[1];
                break;
            case Op::Greater:
                --top;
                *top = top[0] > top[1];
                break;
            case Op::GreaterEqual:
                --top;
                *top = top[0] >= top[1];
                break;
            case Op::Add:
            case Op::Subtract:
            case Op::Multiply:
            case Op::Divide:
            case Op::Remainder:
            case Op::Power:
            case Op::BitAnd:
            case Op::BitOr:
            case Op::BitXor:
            case Op::ShiftLeft:
            case Op::ShiftRight:
            case Op::RoundTo:
                --top;
                *top = Rules::Binary(op, top[0], top[1]);
                break;
            default:
                *top = Rules::Unary(op, *top);
                break;
            }
        }
        return *top;
    }
    // NOLINTEND(clang-analyzer-core.*)

private:
    /// A slot that a formula names twice is read once: a register that is not cached must not give two
    /// values.
    T Slot(std::uint32_t operand) {
        for (std::size_t i = 0; i < m_known; ++i) {
            if (m_slots[i] == operand) {
                return m_values[i];
            }
        }
        for (const auto& [slot, value] : m_more) {
            if (slot == operand) {
                return value;
            }
        }
        const T value = operand & Formula::kExpression ? Run(operand & ~Formula::kExpression)
                                                       : m_load(m_context, operand);
        if (m_known < kFew) {
            m_slots[m_known] = operand;
            m_values[m_known++] = value;
        } else {
            m_more.emplace_back(operand, value);
        }
        return value;
    }

    static constexpr std::size_t kFew = 8;

    const Formula& m_formula;
    Load m_load;
    void* m_context;
    std::size_t m_known = 0;
    std::uint32_t m_slots[kFew];
    T m_values[kFew];
    std::vector<std::pair<std::uint32_t, T>> m_more;
};

std::int64_t Formula::RunInteger(LoadInteger load, void* context) const {
    return FormulaMachine<std::int64_t, LoadInteger>(*this, load, context).Run(0);
}

double Formula::RunFloat(LoadFloat load, void* context) const {
    return FormulaMachine<double, LoadFloat>(*this, load, context).Run(0);
}

} // namespace Norvane::GenApi
