#include "genapi/Formula.h"

#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Norvane::GenApi {

namespace {

/// Deeper formulas than this come from no camera; the parser descends one set of frames per level.
constexpr int kDeepest = 60;

struct Function {
    std::string_view name;
    Op op;
};
constexpr Function kFunctions[] = {
    {"SGN", Op::Sgn},   {"NEG", Op::Negate}, {"ABS", Op::Abs},   {"SQRT", Op::Sqrt},   {"EXP", Op::Exp},
    {"LN", Op::Ln},     {"LG", Op::Lg},      {"SIN", Op::Sin},   {"COS", Op::Cos},     {"TAN", Op::Tan},
    {"ASIN", Op::Asin}, {"ACOS", Op::Acos},  {"ATAN", Op::Atan}, {"TRUNC", Op::Trunc}, {"FLOOR", Op::Floor},
    {"CEIL", Op::Ceil}, {"ROUND", Op::Round}};

struct BinaryOperator {
    std::string_view text;
    Op op;
    int level; ///< C's precedence; a higher one binds tighter
};
/// Longer texts first, so that "<" does not hide "<<".
constexpr BinaryOperator kBinary[] = {
    {"**", Op::Power, 11},    {"<<", Op::ShiftLeft, 8},    {">>", Op::ShiftRight, 8},
    {"<=", Op::LessEqual, 7}, {">=", Op::GreaterEqual, 7}, {"<>", Op::NotEqual, 6},
    {"!=", Op::NotEqual, 6},  {"==", Op::Equal, 6},        {"&&", Op::AndJump, 2},
    {"||", Op::OrJump, 1},    {"=", Op::Equal, 6},         {"<", Op::Less, 7},
    {">", Op::Greater, 7},    {"&", Op::BitAnd, 5},        {"^", Op::BitXor, 4},
    {"|", Op::BitOr, 3},      {"+", Op::Add, 9},           {"-", Op::Subtract, 9},
    {"*", Op::Multiply, 10},  {"/", Op::Divide, 10},       {"%", Op::Remainder, 10}};

bool IsNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

} // namespace

/// Recursive descent over one formula and the expressions that it uses; emits code for a stack machine.
class FormulaParser {
public:
    FormulaParser(const Formula::Names& names, Formula::Kind kind, std::pmr::memory_resource& memory)
        : m_names(names), m_memory(memory) {
        m_formula.m_double = kind == Formula::Kind::Float;
        m_expressionProgram.resize(names.expressions.size(), kUnused);
    }

    Formula Run(std::string_view text) {
        CompileProgram(text);
        return m_formula;
    }

private:
    static constexpr std::uint32_t kUnused = 0xFFFFFFFF;
    static constexpr std::uint32_t kCompiling = 0xFFFFFFFE;

    [[noreturn]] void Fail(const std::string& what) const {
        throw Exception(Error::GenApiLogical, "'" + std::string(m_text.substr(0, 80)) + "': " + what +
                                                  " at character " + std::to_string(m_at + 1));
    }

    std::uint32_t CompileProgram(std::string_view text) {
        const auto outerText = m_text;
        const auto outerAt = m_at;
        const auto outerStack = m_stack;
        const auto outerProgram = m_program;
        m_text = text;
        m_at = 0;
        m_stack = 0;
        m_program = m_formula.m_programs.size();
        m_formula.m_programs.Add(m_memory, {});
        Conditional();
        if (!AtEnd()) {
            Fail("unexpected '" + std::string(1, m_text[m_at]) + "'");
        }
        const auto program = m_program;
        m_text = outerText;
        m_at = outerAt;
        m_stack = outerStack;
        m_program = outerProgram;
        return program;
    }

    auto& Code() { return m_formula.m_programs[m_program].code; }

    std::uint32_t Emit(Op op, int stackChange, std::uint32_t operand = 0) {
        m_stack += stackChange;
        auto& program = m_formula.m_programs[m_program];
        program.deepest = std::max(program.deepest, static_cast<std::uint32_t>(std::max(m_stack, 0)));
        if (program.deepest >= Formula::kStack) {
            Fail("nested too deeply");
        }
        program.code.Add(m_memory, {op, operand});
        return program.code.size() - 1;
    }
    void LandHere(std::uint32_t jump) { Code()[jump].operand = Code().size(); }

    bool AtEnd() {
        while (m_at < m_text.size() &&
               (m_text[m_at] == ' ' || (m_text[m_at] >= '\t' && m_text[m_at] <= '\r'))) {
            ++m_at;
        }
        return m_at == m_text.size();
    }
    bool Take(char c) {
        if (AtEnd() || m_text[m_at] != c) {
            return false;
        }
        ++m_at;
        return true;
    }
    void Expect(char c) {
        if (!Take(c)) {
            Fail(std::string("'") + c + "' is missing");
        }
    }

    struct Descent {
        explicit Descent(FormulaParser& parser) : m_parser(parser) {
            if (++m_parser.m_depth > kDeepest) {
                m_parser.m_depth = 0;
                m_parser.Fail("nested too deeply");
            }
        }
        ~Descent() { --m_parser.m_depth; }
        FormulaParser& m_parser;
    };

    void Conditional() {
        const Descent descent(*this);
        Binary(1);
        if (!Take('?')) {
            return;
        }
        const auto toElse = Emit(Op::JumpIfZero, -1);
        Conditional();
        const auto toEnd = Emit(Op::Jump, -1);
        Expect(':');
        LandHere(toElse);
        Conditional();
        LandHere(toEnd);
    }

    const BinaryOperator* PeekBinary() {
        if (AtEnd()) {
            return nullptr;
        }
        const auto rest = m_text.substr(m_at);
        for (const auto& candidate : kBinary) {
            if (rest.substr(0, candidate.text.size()) == candidate.text) {
                return &candidate;
            }
        }
        return nullptr;
    }

    void Binary(int level) {
        Unary();
        for (const auto* found = PeekBinary(); found && found->level >= level; found = PeekBinary()) {
            m_at += found->text.size();
            if (found->op == Op::AndJump || found->op == Op::OrJump) {
                const auto jump = Emit(found->op, -1);
                Binary(found->level + 1);
                Emit(Op::Truth, 0);
                LandHere(jump);
            } else if (found->op == Op::Power) {
                const Descent descent(*this);
                Binary(found->level); // groups from the right
                Emit(Op::Power, -1);
            } else {
                Binary(found->level + 1);
                Emit(found->op, -1);
            }
        }
    }

    void Unary() {
        std::vector<Op> signs;
        while (!AtEnd()) {
            const char c = m_text[m_at];
            if (c == '-') {
                signs.push_back(Op::Negate);
            } else if (c == '~') {
                signs.push_back(Op::Complement);
            } else if (c == '!') {
                signs.push_back(Op::Not);
            } else if (c != '+') {
                break;
            }
            ++m_at;
        }
        Primary();
        while (!signs.empty()) {
            Emit(signs.back(), 0);
            signs.pop_back();
        }
    }

    void Primary() {
        if (AtEnd()) {
            Fail("the formula ends where a value is due");
        }
        const char c = m_text[m_at];
        if (c == '(') {
            ++m_at;
            Conditional();
            Expect(')');
        } else if (IsDigit(c) || c == '.') {
            Number();
        } else if (IsNameStart(c)) {
            Name();
        } else {
            Fail("unexpected '" + std::string(1, c) + "'");
        }
    }

    void Number() {
        const auto start = m_at;
        const auto isAt = [this](auto&& test) { return m_at < m_text.size() && test(m_text[m_at]); };
        const auto digits = [&] {
            while (isAt(IsDigit)) {
                ++m_at;
            }
        };
        if (m_text[m_at] == '0' && m_at + 1 < m_text.size() && (m_text[m_at + 1] | 0x20) == 'x') {
            m_at += 2;
            while (isAt(IsHexDigit)) {
                ++m_at;
            }
        } else {
            digits();
            if (isAt([](char c) { return c == '.'; })) {
                ++m_at;
                digits();
            }
            if (isAt([](char c) { return (c | 0x20) == 'e'; })) {
                const auto mantissaEnd = m_at++;
                if (isAt([](char c) { return c == '+' || c == '-'; })) {
                    ++m_at;
                }
                if (isAt(IsDigit)) {
                    digits();
                } else {
                    m_at = mantissaEnd;
                }
            }
        }
        const auto text = m_text.substr(start, m_at - start);
        if (const auto integer = ParseInteger(text)) {
            PushNumber(static_cast<double>(*integer), *integer);
        } else if (const auto number = ParseFloat(text)) {
            PushConstant(*number);
        } else {
            m_at = start;
            Fail("'" + std::string(text) + "' is no number");
        }
    }

    void PushNumber(double number, std::int64_t integer) {
        Emit(Op::Number, +1, m_formula.m_numbers.size());
        m_formula.m_numbers.Add(m_memory, {integer, number});
    }

    void PushConstant(double number) {
        const bool whole = std::abs(number) < 9.2e18 && number == std::trunc(number);
        // A fraction would vanish in 64-bit arithmetic, and with it the maker's intention.
        m_formula.m_double = m_formula.m_double || !whole;
        PushNumber(number, whole ? static_cast<std::int64_t>(number) : 0);
    }

    void Name() {
        const auto start = m_at;
        while (m_at < m_text.size() &&
               (IsNameStart(m_text[m_at]) || IsDigit(m_text[m_at]) || m_text[m_at] == '.')) {
            ++m_at;
        }
        const auto name = m_text.substr(start, m_at - start);
        const bool call = !AtEnd() && m_text[m_at] == '(';
        if (call && Call(name)) {
            return;
        }
        if (const auto found = std::find(m_names.variables.begin(), m_names.variables.end(), name);
            found != m_names.variables.end()) {
            Emit(Op::Slot, +1, static_cast<std::uint32_t>(found - m_names.variables.begin()));
            return;
        }
        for (const auto& constant : m_names.constants) {
            if (constant.name == name) {
                PushConstant(constant.value);
                return;
            }
        }
        for (std::size_t i = 0; i < m_names.expressions.size(); ++i) {
            if (m_names.expressions[i].name == name) {
                PushExpression(i);
                return;
            }
        }
        if (name == "PI" || name == "E") {
            if (Take('(')) { // some makers write the constants as functions
                Expect(')');
            }
            PushConstant(name == "PI" ? std::numbers::pi : std::numbers::e);
            return;
        }
        m_at = start;
        Fail("'" + std::string(name) + "' is neither a variable nor a constant");
    }

    void PushExpression(std::size_t index) {
        if (m_expressionProgram[index] == kCompiling) {
            Fail("the expression '" + std::string(m_names.expressions[index].name) + "' uses itself");
        }
        if (m_expressionProgram[index] == kUnused) {
            m_expressionProgram[index] = kCompiling;
            m_expressionProgram[index] = CompileProgram(m_names.expressions[index].text);
        }
        Emit(Op::Slot, +1, Formula::kExpression | m_expressionProgram[index]);
    }

    bool Call(std::string_view name) {
        for (const auto& function : kFunctions) {
            if (function.name != name) {
                continue;
            }
            Expect('(');
            Conditional();
            if (function.op == Op::Round && Take(',')) {
                Conditional();
                Emit(Op::RoundTo, -1);
            } else {
                Emit(function.op, 0);
            }
            Expect(')');
            return true;
        }
        return false;
    }

    const Formula::Names& m_names;
    std::pmr::memory_resource& m_memory;
    Formula m_formula;
    std::vector<std::uint32_t> m_expressionProgram;
    std::string_view m_text;
    std::size_t m_at = 0;
    std::uint32_t m_program = 0;
    int m_stack = 0;
    int m_depth = 0;
};

Formula Formula::Compile(std::string_view text, const Names& names, Kind kind,
                         std::pmr::memory_resource& memory) {
    return FormulaParser(names, kind, memory).Run(text);
}

} // namespace Norvane::GenApi
