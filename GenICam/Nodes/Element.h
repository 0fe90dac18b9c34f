// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Types.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "GenICam/Nodes/Node.h"
#include "GenICam/Nodes/NumberSource.h"

/// How the elements inside a node's own element reach its members: each class of node has a table
/// of rows, and the handlers here are made from pointers to members.
namespace GenApi {

template <typename Enum, std::size_t Size>
using ChoiceTable = std::array<std::pair<std::string_view, Enum>, Size>;

/// One element of a node, as a handler sees it.
class CElement {
 public:
  /// `child` is the node that a nested node element has become, or null.
  CElement(CNode& owner, std::string_view name, std::string text, std::string nameAttribute,
           CNode* child)
      : m_owner(owner),
        m_name(name),
        m_text(std::move(text)),
        m_nameAttribute(std::move(nameAttribute)),
        m_child(child) {}

  CNode& Owner() const { return m_owner; }
  const std::string& Text() const { return m_text; }
  const std::string& NameAttribute() const { return m_nameAttribute; }
  CNode* Child() const { return m_child; }

  /// The text as a number, or PropertyException.
  template <typename T>
  T Number() const;
  /// The value of the text in a table of words, or PropertyException.
  template <typename Enum, std::size_t Size>
  Enum Choice(const ChoiceTable<Enum, Size>& table) const {
    for (const auto& [word, value] : table)
      if (word == m_text) return value;
    Fail("has none of the words that are possible there");
  }
  /// The node that the text names, or PropertyException.
  CNode& Target() const;
  CNode& NumericTarget() const;

  /// PropertyException "Node '...': element '...' <problem>", with the text of the element.
  [[noreturn]] void Fail(const char* problem) const;

 private:
  CNode& m_owner;
  std::string_view m_name;
  std::string m_text;
  std::string m_nameAttribute;
  CNode* m_child;
};

enum class EOccurs : bool { Once, Often };

struct ElementRow {
  std::string_view name;
  void (*read)(CNode& node, const CElement& element);
  EOccurs occurs = EOccurs::Once;
};

template <std::size_t Size>
const ElementRow* FindRow(const std::array<ElementRow, Size>& rows, std::string_view name) {
  for (const ElementRow& row : rows)
    if (row.name == name) return &row;
  return nullptr;
}

inline constexpr ChoiceTable<EVisibility, 4> kVisibilities = {
    {{"Beginner", Beginner}, {"Expert", Expert}, {"Guru", Guru}, {"Invisible", Invisible}}};
inline constexpr ChoiceTable<ENameSpace, 2> kNameSpaces = {
    {{"Standard", Standard}, {"Custom", Custom}}};
inline constexpr ChoiceTable<EAccessMode, 5> kAccessModes = {
    {{"RO", RO}, {"WO", WO}, {"RW", RW}, {"NA", NA}, {"NI", NI}}};
inline constexpr ChoiceTable<EYesNo, 2> kYesNo = {{{"Yes", Yes}, {"No", No}}};
inline constexpr ChoiceTable<ECachingMode, 3> kCachingModes = {
    {{"NoCache", NoCache}, {"WriteThrough", WriteThrough}, {"WriteAround", WriteAround}}};
inline constexpr ChoiceTable<ESign, 2> kSigns = {{{"Signed", Signed}, {"Unsigned", Unsigned}}};
inline constexpr ChoiceTable<EEndianess, 2> kEndianesses = {
    {{"LittleEndian", LittleEndian}, {"BigEndian", BigEndian}}};
inline constexpr ChoiceTable<ERepresentation, 7> kRepresentations = {{{"Linear", Linear},
                                                                      {"Logarithmic", Logarithmic},
                                                                      {"Boolean", Boolean},
                                                                      {"PureNumber", PureNumber},
                                                                      {"HexNumber", HexNumber},
                                                                      {"IPV4Address", IPV4Address},
                                                                      {"MACAddress", MACAddress}}};
inline constexpr ChoiceTable<EDisplayNotation, 3> kDisplayNotations = {
    {{"Automatic", fnAutomatic}, {"Fixed", fnFixed}, {"Scientific", fnScientific}}};
inline constexpr ChoiceTable<ESlope, 4> kSlopes = {{{"Increasing", Increasing},
                                                    {"Decreasing", Decreasing},
                                                    {"Varying", Varying},
                                                    {"Automatic", Automatic}}};

namespace Detail {

template <typename Member>
struct MemberOf;
template <typename Class, typename Type>
struct MemberOf<Type Class::*> {
  using Owner = Class;
};

/// The member of a node that is known to be of the member's class.
template <auto Member>
auto& Access(CNode& node) {
  return static_cast<typename MemberOf<decltype(Member)>::Owner&>(node).*Member;
}

}  // namespace Detail

/// Throws PropertyException with the names if an element that a node needs is not there.
void RequireElement(const CNode& node, bool isThere, const char* element);

inline void Ignore(CNode&, const CElement&) {}

template <auto Member>
void TakeText(CNode& node, const CElement& element) {
  Detail::Access<Member>(node) = element.Text();
}

template <auto Member, const auto& Table>
void TakeChoice(CNode& node, const CElement& element) {
  Detail::Access<Member>(node) = element.Choice(Table);
}

/// For members of type CNumberSource<T> or std::optional<T>.
template <auto Member>
void TakeNumber(CNode& node, const CElement& element) {
  auto& member = Detail::Access<Member>(node);
  using Type = std::remove_reference_t<decltype(member)>;
  if constexpr (requires { typename Type::NumberType; }) {
    if (member.IsSet()) element.Fail("stands beside another one for the same purpose");
    member = Type(element.Number<typename Type::NumberType>());
  } else {
    member = element.Number<typename Type::value_type>();
  }
}

/// For members of type CNumberSource<T>: the number comes from a node.
template <auto Member, ELink Link>
void TakeNode(CNode& node, const CElement& element) {
  auto& member = Detail::Access<Member>(node);
  if (member.IsSet()) element.Fail("stands beside another one for the same purpose");
  CNode& target = element.NumericTarget();
  member = std::remove_reference_t<decltype(member)>(target);
  node.AddLink(Link, target);
}

template <ELink Link>
void TakeLink(CNode& node, const CElement& element) {
  node.AddLink(Link, element.Target());
}

}  // namespace GenApi
