#pragma once

#include <exception>
#include <string>

namespace Norvane {

/// What kind of failure an Exception reports. The values follow GenTL's error list (GenTL 1.6, section 6.5.1)
/// where it has one, the rest start at -2000.
enum class Error : int {
    Success = 0,
    Unknown = -1001,
    NotInitialized = -1002,
    NotImplemented = -1003,
    ResourceInUse = -1004,
    AccessDenied = -1005,
    InvalidHandle = -1006,
    InvalidId = -1007,
    NoData = -1008,
    InvalidParameter = -1009,
    Io = -1010,
    Timeout = -1011,
    Abort = -1012,
    InvalidBuffer = -1013,
    NotAvailable = -1014,
    InvalidAddress = -1015,
    OutOfMemory = -1021,
    Busy = -1022,
    GenApiAccess = -2001,     ///< a node's access mode forbids the operation
    GenApiOutOfRange = -2002, ///< a value outside a node's range, increment or entries
    GenApiLogical = -2003,    ///< a null node pointer, a dependency cycle, a broken description
    ImageConversion = -3001,
    FileFormat = -3002,
};

/// Where an exception was made. std::source_location does the same, but clang 14 cannot use it.
struct SourceLocation {
    const char* file;     ///< good for the program's life
    int line;             ///< from 1
    const char* function; ///< good for the program's life

    /// The place of the call, when it is called without arguments.
    static constexpr SourceLocation Current(const char* file = __builtin_FILE(), int line = __builtin_LINE(),
                                            const char* function = __builtin_FUNCTION()) noexcept {
        return {file, line, function};
    }
};

/// Every failure of the library. `what()` is one sentence that says what failed, where, and what to do about
/// it.
class Exception : public std::exception {
public:
    /// `message` is one sentence for users, `name` what GetName() returns.
    Exception(Error code, std::string message, std::string name = "NorvaneException",
              SourceLocation where = SourceLocation::Current());

    /// UTF-8, as all texts here good as long as the exception.
    const char* what() const noexcept override { return m_message.c_str(); }
    /// The kind of failure, for programs that react to it.
    Error GetError() const noexcept { return m_code; }
    /// The exception's class name in GenApi's terms, for example "LogicalErrorException".
    const char* GetName() const noexcept { return m_name.c_str(); }
    /// Where the library made it, for reports to us.
    const char* GetSourceFileName() const noexcept { return m_where.file; }
    /// See GetSourceFileName().
    int GetSourceLine() const noexcept { return m_where.line; }
    /// See GetSourceFileName().
    const char* GetFunctionName() const noexcept { return m_where.function; }

private:
    Error m_code;
    std::string m_message;
    std::string m_name;
    SourceLocation m_where;
};

/// The error of a dereferenced null handle or node pointer: "NULL pointer dereferenced",
/// "LogicalErrorException".
Exception NullPointerError(SourceLocation where = SourceLocation::Current());

} // namespace Norvane
