// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "GenICam/Nodes/Arithmetic.h"

namespace GenApi {

/// What the names in a formula stand for.
struct FormulaNames {
  struct Definition {
    std::string name;
    std::string text;
  };

  /// Numbers, given as text.
  std::vector<Definition> constants;
  /// Further formulas, which may use all names, but not themselves in a circle.
  std::vector<Definition> expressions;
  /// Index of the variable of a name, or a negative number if there is none.
  std::function<int(std::string_view)> findVariable;
};

enum class EFormulaOp : std::uint8_t {
  Push,
  Variable,
  Expression,
  Unary,
  Binary,
  Jump,
  JumpIfZero,        ///< takes the value
  JumpKeepingFalse,  ///< a 0 stays as 0 and jumps, anything else is taken
  JumpKeepingTrue,   ///< 0 is taken, anything else stays as 1 and jumps
  Truth,             ///< to 1 or 0
};

/// One step of a stack machine.
template <typename T>
struct FormulaInstruction {
  EFormulaOp op;
  std::size_t index = 0;  ///< of a variable, an expression counted from 1, or the jump's target
  T value{};
  UnaryFunction<T> unary = nullptr;
  BinaryFunction<T> binary = nullptr;
};

template <typename T>
using FormulaProgram = std::vector<FormulaInstruction<T>>;

/// The program of one formula. Throws PropertyException with the owner's name, the text and the
/// position if it is none.
template <typename T>
FormulaProgram<T> ParseFormula(const std::string& owner, std::string_view text,
                               const FormulaNames& names);

}  // namespace GenApi
