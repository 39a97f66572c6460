#pragma once

/// Enumerations of the GenApi module of GenICam (GenApi 3.x reference, "GenApi/Types.h" of the standard's
/// text), with the standard's member names and values.
namespace Norvane::GenApi {

/// What can be done with a node now.
enum EAccessMode {
    NI = 0, ///< not implemented: this device does not have the feature
    NA = 1, ///< not available in the device's present state
    WO = 2, ///< write only
    RO = 3, ///< read only
    RW = 4, ///< read and write
    _UndefinedAccesMode = 5
};
/// For which users a node is meant; each level sees the ones before it too.
enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };
/// What writing a node leaves in its cache.
enum ECachingMode {
    NoCache = 0,      ///< nothing; every read asks the device
    WriteThrough = 1, ///< the written value
    WriteAround = 2,  ///< nothing; the next read asks the device
    _UndefinedCachingMode = 3
};
/// How a user interface shows a number.
enum ERepresentation {
    Linear = 0,      ///< a slider
    Logarithmic = 1, ///< a slider of equal factors
    Boolean = 2,     ///< a check box
    PureNumber = 3,  ///< a decimal number
    HexNumber = 4,   ///< 0x and hexadecimal digits
    IPV4Address = 5, ///< four bytes with dots
    MACAddress = 6,  ///< six hexadecimal bytes with colons
    _UndefinedRepresentation = 7
};
/// Which values between minimum and maximum a number takes.
enum EIncMode {
    noIncrement = 0,    ///< all
    fixedIncrement = 1, ///< those a multiple of the increment above the minimum
    listIncrement = 2,  ///< those of a list
};
/// How a float is written as text, in the terms of the C++ stream flags.
enum EDisplayNotation { fnAutomatic = 0, fnFixed = 1, fnScientific = 2, _UndefinedEDisplayNotation = 3 };
/// Who gave a feature its name and meaning.
enum ENameSpace {
    Custom = 0,   ///< the device's maker
    Standard = 1, ///< a naming convention such as the SFNC
    _UndefinedNameSpace = 2
};
/// The kinds of nodes, by their principal interface.
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
/// Ways in which nodes are joined, see INode::GetChildren.
enum ELinkType {
    ctParentNodes = 0,          ///< those that use this node directly
    ctReadingChildren = 1,      ///< those that reading this node, its range or its access mode uses directly
    ctWritingChildren = 2,      ///< those that writing this node writes
    ctInvalidatingChildren = 3, ///< those that it names as its invalidators
    ctDependingNodes = 4,       ///< all that a change of this node may change
    ctTerminalNodes = 5         ///< the registers behind its value
};
/// When a callback is called.
enum ECallbackType {
    cbPostInsideLock = 1,  ///< fired inside the node map's lock, after the operation that changed the node
    cbPostOutsideLock = 2, ///< fired after the lock has been left
};

/// RO or RW.
constexpr bool IsReadable(EAccessMode mode) noexcept {
    return mode == RO || mode == RW;
}
/// WO or RW.
constexpr bool IsWritable(EAccessMode mode) noexcept {
    return mode == WO || mode == RW;
}
/// Anything but NI, and defined.
constexpr bool IsImplemented(EAccessMode mode) noexcept {
    return mode != NI && mode != _UndefinedAccesMode;
}
/// WO, RO or RW.
constexpr bool IsAvailable(EAccessMode mode) noexcept {
    return IsImplemented(mode) && mode != NA;
}

} // namespace Norvane::GenApi
