#pragma once

#include "genapi/ArenaList.h"
#include "norvane/Exception.h"

#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Norvane::GenApi {

/// A calculation has no result (GenApiLogical). It does not know the node that it is done for; see Named().
class FormulaError final : public Exception {
public:
    explicit FormulaError(std::string message) : Exception(Error::GenApiLogical, std::move(message)) {}
};

/// What one instruction of a compiled formula does. Operands are on a stack; the instructions with a slot or
/// a jump target name it in Instruction::operand.
enum class Op : std::uint8_t {
    Number,
    Slot,
    Jump,
    JumpIfZero,
    AndJump,
    OrJump,
    Truth,
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    Power,
    Negate,
    Not,
    Complement,
    BitAnd,
    BitOr,
    BitXor,
    ShiftLeft,
    ShiftRight,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Sgn,
    Abs,
    Sqrt,
    Exp,
    Ln,
    Lg,
    Sin,
    Cos,
    Tan,
    Asin,
    Acos,
    Atan,
    Trunc,
    Floor,
    Ceil,
    Round,
    RoundTo,
};

/// A formula of the description's language (GenICam standard 2.1, section 2.8.7: "SwissKnife" operators),
/// compiled once. Integer formulas calculate in 64-bit two's complement that wraps, with division towards
/// zero; float formulas in double. An integer formula that holds a number with a fraction calculates in
/// double throughout and drops the fraction of the result. && || and ?: evaluate only the operands that they
/// need.
///
/// A view of what Compile made in the caller's memory. Immutable after Compile; evaluation may run on any
/// number of threads.
class Formula {
public:
    enum class Kind : std::uint8_t { Integer, Float };

    /// Named things that a formula may use. Constants and expressions are bound while compiling; what remains
    /// are the variables, in the order of Variables().
    struct Constant {
        std::string_view name;
        double value;
    };
    struct Expression {
        std::string_view name;
        std::string_view text;
    };
    struct Names {
        std::vector<std::string_view> variables;
        std::vector<Constant> constants;
        std::vector<Expression> expressions;
    };

    Formula() = default;

    /// @param memory  holds the formula, which is never destroyed; must outlive it.
    /// @throws Exception (GenApiLogical) that says what is wrong and at which character.
    static Formula Compile(std::string_view text, const Names& names, Kind kind,
                           std::pmr::memory_resource& memory);

    bool CalculatesInDouble() const { return m_double; }

    /// Evaluates; `load(index)` gives the value of a variable, and is called at most once for each.
    /// @throws FormulaError for a division by zero and for a result that is no integer's.
    template <class Load>
    std::int64_t EvaluateInteger(Load&& load) const;
    template <class Load>
    double EvaluateFloat(Load&& load) const;

private:
    friend class FormulaParser;

    struct Instruction {
        Op op;
        std::uint32_t operand;
    };
    struct Program {
        ArenaList<Instruction> code;
        std::uint32_t deepest = 0;
    };
    struct Number {
        std::int64_t integer;
        double real;
    };
    static constexpr std::size_t kStack = 64;
    static constexpr std::uint32_t kExpression = 0x80000000u;

    using LoadInteger = std::int64_t (*)(void*, std::uint32_t);
    using LoadFloat = double (*)(void*, std::uint32_t);
    std::int64_t RunInteger(LoadInteger load, void* context) const;
    double RunFloat(LoadFloat load, void* context) const;
    template <class T, class Load>
    friend class FormulaMachine;

    ArenaList<Program> m_programs; ///< the formula itself, then the expressions that it uses
    ArenaList<Number> m_numbers;
    bool m_double = false;
};

/// `value` without its fraction. @throws FormulaError for a value outside 64 bits, or NaN.
std::int64_t TruncateToInteger(double value);
/// The nearest integer, halves away from zero; likewise.
std::int64_t RoundToInteger(double value);

template <class Load>
std::int64_t Formula::EvaluateInteger(Load&& load) const {
    using L = std::remove_reference_t<Load>;
    if (m_double) {
        return TruncateToInteger(EvaluateFloat(load));
    }
    return RunInteger(
        [](void* context, std::uint32_t index) -> std::int64_t {
            return static_cast<std::int64_t>((*static_cast<L*>(context))(index));
        },
        const_cast<void*>(static_cast<const void*>(&load)));
}

template <class Load>
double Formula::EvaluateFloat(Load&& load) const {
    using L = std::remove_reference_t<Load>;
    return RunFloat(
        [](void* context, std::uint32_t index) -> double {
            return static_cast<double>((*static_cast<L*>(context))(index));
        },
        const_cast<void*>(static_cast<const void*>(&load)));
}

} // namespace Norvane::GenApi
