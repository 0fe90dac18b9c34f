// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCTypes.h>

/// Enumerations of the GenApi standard. Values follow the standard's order.
namespace GenApi {

/// Which accesses a node allows at this moment.
enum EAccessMode {
  NI = 0,  ///< not implemented: never there on this device
  NA = 1,  ///< not available: not there now
  WO = 2,  ///< write only
  RO = 3,  ///< read only
  RW = 4,  ///< read and write
  _UndefinedAccesMode = 5,
  _CycleDetectAccesMode = 6
};

/// Which users a feature is meant for; each level contains those before it.
enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };

/// What a register keeps of the values that pass through it.
enum ECachingMode {
  NoCache = 0,       ///< each access goes to the port
  WriteThrough = 1,  ///< values read and written are kept
  WriteAround = 2,   ///< values read are kept, a write drops the kept value
  _UndefinedCachingMode = 3
};

/// How a user interface should show a number.
enum ERepresentation {
  Linear = 0,
  Logarithmic = 1,
  Boolean = 2,
  PureNumber = 3,
  HexNumber = 4,
  IPV4Address = 5,
  MACAddress = 6,
  _UndefinedRepresentation = 7
};

enum ESign { Signed = 0, Unsigned = 1, _UndefinedSign = 2 };
enum EEndianess { BigEndian = 0, LittleEndian = 1, _UndefinedEndian = 2 };
enum EYesNo { No = 0, Yes = 1, _UndefinedYesNo = 2 };
/// Whether a feature's name is the standard's or the vendor's own.
enum ENameSpace { Custom = 0, Standard = 1, _UndefinedNameSpace = 2 };
/// Notation of a floating-point number as text.
enum EDisplayNotation {
  fnAutomatic = 0,
  fnFixed = 1,
  fnScientific = 2,
  _UndefinedEDisplayNotation = 3
};
/// Which of two ends of a converter grows with the other.
enum ESlope { Increasing = 0, Decreasing = 1, Varying = 2, Automatic = 3, _UndefinedESlope = 4 };

/// The interface that represents a node best.
enum EInterfaceType {
  intfIValue = 0,
  intfIBase = 1,
  intfIInteger = 2,
  intfIBoolean = 3,
  intfICommand = 4,
  intfIFloat = 5,
  intfIString = 6,
  intfIRegister = 7,
  intfICategory = 8,
  intfIEnumeration = 9,
  intfIEnumEntry = 10,
  intfIPort = 11
};

/// Which variable of a converter's formula is the input.
enum EInputDirection { idFrom = 0, idTo = 1, idNone = 2, _UndefinedEInputDirection = 3 };

}  // namespace GenApi
