#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string>

namespace Varnex {

/// Base of the URLs that are program text, such as "javascript:print(1)"; the scheme tells the language.
class VARNEX_API URLDirect : public URLImpl {
public:
    /// `text`: the program.
    explicit URLDirect(std::string text);
    ~URLDirect() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    [[nodiscard]] Stream* open() const override;
    /// Points into this object.
    [[nodiscard]] Memory read2mem() const override;
    /// Always throws.
    [[nodiscard]] URLImpl* createRelative(const std::string& text) const override;

    [[nodiscard]] virtual const char* mimeType() const = 0;
    [[nodiscard]] virtual const char* scheme() const = 0;

    /// The program, as written.
    [[nodiscard]] const std::string& getText() const { return text_; }

private:
    std::string text_;
};

}  // namespace Varnex
