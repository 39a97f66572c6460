#include "norvane/Exception.h"

namespace Norvane {

Exception::Exception(Error code, std::string message, std::string name, SourceLocation where)
    : m_code(code), m_message(std::move(message)), m_name(std::move(name)), m_where(where) {}

Exception NullPointerError(SourceLocation where) {
    return Exception(Error::GenApiLogical, "NULL pointer dereferenced", "LogicalErrorException", where);
}

} // namespace Norvane
