#pragma once

/// Enumerations of the GenApi module of GenICam (GenApi 3.x reference, "GenApi/Types.h" of the standard's
/// text), with the standard's member names and values.
namespace Norvane::GenApi {

enum EAccessMode { NI = 0, NA = 1, WO = 2, RO = 3, RW = 4, _UndefinedAccesMode = 5 };
enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };
enum ECachingMode { NoCache = 0, WriteThrough = 1, WriteAround = 2, _UndefinedCachingMode = 3 };
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
enum EIncMode { noIncrement = 0, fixedIncrement = 1, listIncrement = 2 };
enum EDisplayNotation { fnAutomatic = 0, fnFixed = 1, fnScientific = 2, _UndefinedEDisplayNotation = 3 };
enum ENameSpace { Custom = 0, Standard = 1, _UndefinedNameSpace = 2 };
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
enum ELinkType {
    ctParentNodes = 0,
    ctReadingChildren = 1,
    ctWritingChildren = 2,
    ctInvalidatingChildren = 3,
    ctDependingNodes = 4,
    ctTerminalNodes = 5
};
enum ECallbackType {
    cbPostInsideLock = 1,  ///< fired inside the node map's lock, after the operation that changed the node
    cbPostOutsideLock = 2, ///< fired after the lock has been left
};

constexpr bool IsReadable(EAccessMode mode) noexcept {
    return mode == RO || mode == RW;
}
constexpr bool IsWritable(EAccessMode mode) noexcept {
    return mode == WO || mode == RW;
}
constexpr bool IsImplemented(EAccessMode mode) noexcept {
    return mode != NI && mode != _UndefinedAccesMode;
}
constexpr bool IsAvailable(EAccessMode mode) noexcept {
    return IsImplemented(mode) && mode != NA;
}

} // namespace Norvane::GenApi
