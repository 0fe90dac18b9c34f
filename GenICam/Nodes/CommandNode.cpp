// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/CommandNode.h"

#include "GenICam/Nodes/BooleanNode.h"

namespace GenApi {

const ElementRow* CCommand::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Value", &TakeNumber<&CCommand::m_value>},
      ElementRow{"pValue", &TakeNode<&CCommand::m_value, ELink::Value>},
      ElementRow{"CommandValue", &TakeNumber<&CCommand::m_commandValue>},
      ElementRow{"pCommandValue", &TakeNode<&CCommand::m_commandValue, ELink::Limit>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CCommand::Finish() {
  RequireElement(*this, m_value.IsSet(), "pValue");
  RequireElement(*this, m_commandValue.IsSet(), "CommandValue");
}

EAccessMode CCommand::OwnAccessMode(bool honourLock) const {
  return m_value.AccessMode(honourLock);
}

int64_t CCommand::ReadNumber(bool ignoreCache) const { return m_value.ReadValue(ignoreCache); }

void CCommand::WriteNumber(int64_t value) { m_value.WriteValue(*this, value); }

void CCommand::Execute(bool) {
  AutoLock lock(Lock());
  RequireWritable();
  Write(m_commandValue.Read());
}

bool CCommand::IsDone(bool) {
  AutoLock lock(Lock());
  if (!IsReadable(AccessMode(false))) return true;
  // A device clears the value by itself, so what the cache holds says nothing.
  return Read<int64_t>(true) != m_commandValue.Read();
}

GenICam::gcstring CCommand::ToString(bool verify, bool) { return IsDone(verify) ? "1" : "0"; }

void CCommand::FromString(const GenICam::gcstring& valueStr, bool verify) {
  if (ParseBoolean(*this, valueStr)) Execute(verify);
}

}  // namespace GenApi
