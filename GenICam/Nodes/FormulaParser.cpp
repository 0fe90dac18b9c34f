// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/FormulaParser.h"

#include <Base/GCException.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

namespace GenApi {
namespace {

/// Shunting-yard: operators wait on a stack of their own until one that binds looser arrives, so
/// that neither nesting nor length of a text costs call depth.
template <typename T>
class CParser {
 public:
  CParser(const std::string& owner, std::string_view text, const FormulaNames& names)
      : m_owner(owner), m_text(text), m_names(names) {}

  FormulaProgram<T> Parse() {
    for (SkipBlanks(); m_position < m_text.size(); SkipBlanks())
      m_wantsOperand ? ParseOperand() : ParseOperator();
    if (m_wantsOperand) Fail("ends too early");
    ReduceAll();
    if (!m_waiting.empty()) Fail("has a bracket or a ? that is not closed");
    return std::move(m_program);
  }

 private:
  using Instruction = FormulaInstruction<T>;

  enum class EWaiting { Unary, Binary, And, Or, Question, Colon, Bracket, Function };

  struct Waiting {
    EWaiting kind;
    int precedence = 0;
    std::size_t patch = 0;  ///< the jump that waits for its target
    Instruction instruction{};
    const FunctionRow<T>* function = nullptr;
    int arguments = 0;
  };

  [[noreturn]] void Fail(const char* problem) const {
    throw PROPERTY_EXCEPTION("Node '%s': formula '%.200s' %s (at position %zu)", m_owner.c_str(),
                             std::string(m_text).c_str(), problem, m_position);
  }

  void SkipBlanks() {
    while (m_position < m_text.size() && std::isspace(static_cast<unsigned char>(Current())))
      ++m_position;
  }

  char Current() const { return m_text[m_position]; }

  bool Accept(std::string_view token) {
    if (!m_text.substr(m_position).starts_with(token)) return false;
    m_position += token.size();
    return true;
  }

  std::size_t Emit(Instruction instruction) {
    m_program.push_back(instruction);
    return m_program.size() - 1;
  }

  void PatchToHere(std::size_t jump) { m_program[jump].index = m_program.size(); }

  void ParseOperand() {
    const auto character = static_cast<unsigned char>(Current());
    if (IsEmptyCall() && Accept(")")) return CloseBracket();
    MarkArgument();
    if (std::isdigit(character) || character == '.') return ParseNumber();
    if (std::isalpha(character) || character == '_') return ParseName();
    if (Accept("(")) return m_waiting.push_back({EWaiting::Bracket});
    for (const auto& row : UnaryOperators<T>()) {
      if (!Accept(row.token)) continue;
      return m_waiting.push_back({.kind = EWaiting::Unary,
                                  .precedence = kUnaryPrecedence,
                                  .instruction = {.op = EFormulaOp::Unary, .unary = row.function}});
    }
    Fail("lacks an operand");
  }

  bool IsEmptyCall() const {
    return !m_waiting.empty() && m_waiting.back().kind == EWaiting::Function &&
           m_waiting.back().arguments == 0;
  }

  /// Digits, letters and dots, with a sign only right behind the e of a decimal exponent.
  std::string_view NumberToken() const {
    const std::string_view rest = m_text.substr(m_position);
    const bool isHexadecimal = rest.starts_with("0x") || rest.starts_with("0X");
    std::size_t size = 0;
    while (size < rest.size()) {
      const char c = rest[size];
      const bool isSign = (c == '+' || c == '-') && size > 0 && !isHexadecimal &&
                          (rest[size - 1] == 'e' || rest[size - 1] == 'E');
      if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && !isSign) break;
      ++size;
    }
    return rest.substr(0, size);
  }

  void ParseNumber() {
    const std::string_view token = NumberToken();
    const auto value = ParseLiteral<T>(token);
    if (!value) Fail("holds a number that means nothing here");
    m_position += token.size();
    EmitOperand({EFormulaOp::Push, 0, *value});
  }

  void EmitOperand(Instruction instruction) {
    Emit(instruction);
    m_wantsOperand = false;
  }

  void ParseName() {
    std::size_t end = m_position;
    while (end < m_text.size() && (std::isalnum(static_cast<unsigned char>(m_text[end])) ||
                                   m_text[end] == '_' || m_text[end] == '.'))
      ++end;
    const std::string_view name = m_text.substr(m_position, end - m_position);
    const std::size_t start = std::exchange(m_position, end);
    SkipBlanks();
    if (Accept("(")) return OpenFunction(name, start);
    m_position = end;
    if (const auto operand = FindOperand(name)) return EmitOperand(*operand);
    m_position = start;
    Fail("holds a name that nothing defines");
  }

  std::optional<Instruction> FindOperand(std::string_view name) const {
    const auto isNamed = [&](const FormulaNames::Definition& d) { return d.name == name; };
    if (const auto it = std::ranges::find_if(m_names.constants, isNamed);
        it != m_names.constants.end()) {
      const auto value = ParseLiteral<T>(it->text);
      if (!value) Fail("uses a constant that is no number");
      return Instruction{EFormulaOp::Push, 0, *value};
    }
    if (const auto it = std::ranges::find_if(m_names.expressions, isNamed);
        it != m_names.expressions.end())
      return Instruction{EFormulaOp::Expression,
                         static_cast<std::size_t>(it - m_names.expressions.begin()) + 1};
    const int variable = m_names.findVariable ? m_names.findVariable(name) : -1;
    if (variable < 0) return std::nullopt;
    return Instruction{EFormulaOp::Variable, static_cast<std::size_t>(variable)};
  }

  void OpenFunction(std::string_view name, std::size_t start) {
    for (const auto& row : Functions<T>()) {
      if (row.name != name) continue;
      return m_waiting.push_back({.kind = EWaiting::Function, .function = &row});
    }
    m_position = start;
    Fail("calls a function that does not exist");
  }

  /// The first thing behind the bracket of a call makes the first argument.
  void MarkArgument() {
    const auto isOpen = [](const Waiting& w) { return w.kind == EWaiting::Function; };
    if (!m_waiting.empty() && isOpen(m_waiting.back()) && m_waiting.back().arguments == 0)
      m_waiting.back().arguments = 1;
  }

  void ParseOperator() {
    if (Accept(")")) return CloseBracket();
    if (Accept(",")) return NextArgument();
    if (Accept("?")) return OpenCondition();
    if (Accept(":")) return MiddleOfCondition();
    for (const auto& row : BinaryOperators<T>()) {
      if (Accept(row.token)) return AddBinary(row);
    }
    Fail("lacks an operator");
  }

  void AddBinary(const OperatorRow<T>& row) {
    // Operators of one precedence go from left to right, but for the power.
    Reduce(row.isRightToLeft ? row.precedence + 1 : row.precedence);
    if (row.junction == EJunction::None) {
      m_waiting.push_back({.kind = EWaiting::Binary,
                           .precedence = row.precedence,
                           .instruction = {.op = EFormulaOp::Binary, .binary = row.function}});
    } else {
      const bool isAnd = row.junction == EJunction::And;
      const std::size_t jump =
          Emit({isAnd ? EFormulaOp::JumpKeepingFalse : EFormulaOp::JumpKeepingTrue});
      m_waiting.push_back({isAnd ? EWaiting::And : EWaiting::Or, row.precedence, jump});
    }
    m_wantsOperand = true;
  }

  void OpenCondition() {
    Reduce(1);
    m_waiting.push_back({EWaiting::Question, 0, Emit({EFormulaOp::JumpIfZero})});
    m_wantsOperand = true;
  }

  void MiddleOfCondition() {
    ReduceAll();
    if (m_waiting.empty() || m_waiting.back().kind != EWaiting::Question)
      Fail("has a : without a ?");
    const std::size_t jump = Emit({EFormulaOp::Jump});
    PatchToHere(m_waiting.back().patch);
    m_waiting.back() = {EWaiting::Colon, 0, jump};
    m_wantsOperand = true;
  }

  void NextArgument() {
    ReduceAll();
    if (m_waiting.empty() || m_waiting.back().kind != EWaiting::Function)
      Fail("has a comma outside a call");
    ++m_waiting.back().arguments;
    m_wantsOperand = true;
  }

  void CloseBracket() {
    ReduceAll();
    if (m_waiting.empty() || m_waiting.back().kind == EWaiting::Question)
      Fail("has a closing bracket too many");
    const Waiting opened = m_waiting.back();
    m_waiting.pop_back();
    if (opened.kind == EWaiting::Function) EmitCall(*opened.function, opened.arguments);
    m_wantsOperand = false;
  }

  void EmitCall(const FunctionRow<T>& function, int arguments) {
    if (arguments == 0 && function.isConstant)
      Emit({EFormulaOp::Push, 0, function.constant});
    else if (arguments == 1 && function.unary != nullptr)
      Emit({.op = EFormulaOp::Unary, .unary = function.unary});
    else if (arguments == 2 && function.binary != nullptr)
      Emit({.op = EFormulaOp::Binary, .binary = function.binary});
    else
      Fail("gives a function the wrong number of arguments");
  }

  /// Emits the waiting operators that bind at least as tightly.
  void Reduce(int precedence) {
    while (!m_waiting.empty() && IsOperator(m_waiting.back()) &&
           m_waiting.back().precedence >= precedence)
      EmitTop();
  }

  /// Down to the last open bracket or ?.
  void ReduceAll() { Reduce(0); }

  static bool IsOperator(const Waiting& waiting) {
    return waiting.kind != EWaiting::Bracket && waiting.kind != EWaiting::Function &&
           waiting.kind != EWaiting::Question;
  }

  void EmitTop() {
    const Waiting top = m_waiting.back();
    m_waiting.pop_back();
    switch (top.kind) {
      case EWaiting::Unary:
      case EWaiting::Binary:
        Emit(top.instruction);
        break;
      case EWaiting::And:
      case EWaiting::Or:
        Emit({EFormulaOp::Truth});
        PatchToHere(top.patch);
        break;
      default:
        PatchToHere(top.patch);
    }
  }

  const std::string& m_owner;
  std::string_view m_text;
  const FormulaNames& m_names;
  std::size_t m_position = 0;
  bool m_wantsOperand = true;
  std::vector<Waiting> m_waiting;
  FormulaProgram<T> m_program;
};

}  // namespace

template <>
FormulaProgram<std::int64_t> ParseFormula(const std::string& owner, std::string_view text,
                                          const FormulaNames& names) {
  return CParser<std::int64_t>(owner, text, names).Parse();
}

template <>
FormulaProgram<double> ParseFormula(const std::string& owner, std::string_view text,
                                    const FormulaNames& names) {
  return CParser<double>(owner, text, names).Parse();
}

}  // namespace GenApi
