// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Formula.h"

#include <Base/GCException.h>

#include <optional>
#include <utility>

namespace GenApi {
namespace {

/// One evaluation. Expressions are computed at most once, on a stack of frames.
template <typename T>
class CMachine {
 public:
  CMachine(const std::vector<FormulaProgram<T>>& programs, const IFormulaVariables<T>& variables)
      : m_programs(programs), m_variables(variables), m_results(programs.size()) {}

  T Run() {
    m_frames.push_back({0, 0});
    while (!m_frames.empty()) {
      Frame& frame = m_frames.back();
      const FormulaProgram<T>& program = m_programs[frame.program];
      if (frame.next < program.size()) {
        Step(program[frame.next], frame);
      } else {
        m_results[frame.program] = m_stack.back();
        m_frames.pop_back();
      }
    }
    return m_stack.back();
  }

  bool Overflowed() const { return m_overflowed; }

 private:
  struct Frame {
    std::size_t program;
    std::size_t next;
  };

  T Pop() {
    const T value = m_stack.back();
    m_stack.pop_back();
    return value;
  }

  /// Leaves the frame behind the instruction. A frame is not touched after a push of another.
  void Step(const FormulaInstruction<T>& instruction, Frame& frame) {
    ++frame.next;
    switch (instruction.op) {
      case EFormulaOp::Push:
        return m_stack.push_back(instruction.value);
      case EFormulaOp::Variable:
        return m_stack.push_back(m_variables.Value(instruction.index));
      case EFormulaOp::Expression:
        if (const auto& known = m_results[instruction.index]) return m_stack.push_back(*known);
        return m_frames.push_back({instruction.index, 0});
      case EFormulaOp::Unary:
        m_stack.back() = instruction.unary(m_stack.back(), m_overflowed);
        return;
      case EFormulaOp::Binary: {
        const T second = Pop();
        m_stack.back() = instruction.binary(m_stack.back(), second, m_overflowed);
        return;
      }
      case EFormulaOp::Truth:
        m_stack.back() = static_cast<T>(m_stack.back() != T{0});
        return;
      default:
        Jump(instruction, frame);
    }
  }

  void Jump(const FormulaInstruction<T>& instruction, Frame& frame) {
    const bool isTrue = instruction.op == EFormulaOp::Jump ? false : Pop() != T{0};
    if (isTrue != (instruction.op == EFormulaOp::JumpKeepingTrue)) return;
    if (instruction.op == EFormulaOp::JumpKeepingTrue) m_stack.push_back(T{1});
    if (instruction.op == EFormulaOp::JumpKeepingFalse) m_stack.push_back(T{0});
    frame.next = instruction.index;
  }

  const std::vector<FormulaProgram<T>>& m_programs;
  const IFormulaVariables<T>& m_variables;
  std::vector<std::optional<T>> m_results;
  std::vector<Frame> m_frames;
  std::vector<T> m_stack;
  bool m_overflowed = false;
};

}  // namespace

template <typename T>
CFormula<T>::CFormula(std::string owner, std::string_view text, const FormulaNames& names)
    : m_owner(std::move(owner)) {
  m_programs.push_back(ParseFormula<T>(m_owner, text, names));
  for (const auto& expression : names.expressions)
    m_programs.push_back(ParseFormula<T>(m_owner, expression.text, names));
  CheckCircles();
}

/// Takes away, again and again, the expressions that use none of those left.
template <typename T>
void CFormula<T>::CheckCircles() const {
  std::vector<std::vector<std::size_t>> users(m_programs.size());
  std::vector<std::size_t> uses(m_programs.size(), 0);
  for (std::size_t i = 0; i < m_programs.size(); ++i) {
    for (const FormulaInstruction<T>& instruction : m_programs[i]) {
      if (instruction.op != EFormulaOp::Expression) continue;
      users[instruction.index].push_back(i);
      ++uses[i];
    }
  }
  std::vector<std::size_t> free;
  for (std::size_t i = 0; i < uses.size(); ++i)
    if (uses[i] == 0) free.push_back(i);
  for (std::size_t done = 0; done < free.size(); ++done)
    for (const std::size_t user : users[free[done]])
      if (--uses[user] == 0) free.push_back(user);
  if (free.size() != m_programs.size())
    throw PROPERTY_EXCEPTION("Node '%s': its expressions use each other in a circle",
                             m_owner.c_str());
}

template <typename T>
T CFormula<T>::Evaluate(const IFormulaVariables<T>& variables, bool* overflowed) const {
  CMachine<T> machine(m_programs, variables);
  try {
    const T result = machine.Run();
    if (overflowed != nullptr) *overflowed = machine.Overflowed();
    return result;
  } catch (const ArithmeticError& error) {
    throw RUNTIME_EXCEPTION("Node '%s': %s in its formula", m_owner.c_str(), error.problem);
  }
}

template class CFormula<std::int64_t>;
template class CFormula<double>;

}  // namespace GenApi
