// Exception of the tools library (libhexkit.so), also thrown by the TDF container.
#ifndef MORA_LUX_HEXKIT_HEXKITERROR_H
#define MORA_LUX_HEXKIT_HEXKITERROR_H

#include <exception>
#include <string>

namespace Mora {
namespace Lux {
namespace Hexkit {

class HexkitErrorIF {
public:
    enum Severity_Type {
        SEVERITY_INFO = 0,
        SEVERITY_WARNING = 1,
        SEVERITY_ERROR = 2,
        SEVERITY_FATAL = 3
    };
    virtual ~HexkitErrorIF() {}
    virtual Severity_Type GetSeverity() const = 0;
};

class HexkitError : public std::exception, public HexkitErrorIF {
public:
    HexkitError(const std::string& message, Severity_Type severity);
    ~HexkitError() override;
    /// The message text the error was made with.
    const char* what() const noexcept override;
    Severity_Type GetSeverity() const override;

private:
    std::string m_message;
    Severity_Type m_severity;
};

} // namespace Hexkit
} // namespace Lux
} // namespace Mora

#endif
