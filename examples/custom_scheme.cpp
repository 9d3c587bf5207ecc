// A URL scheme of an application's own, in C++: "env:NAME" stands for the value of an environment variable.
#include <Varnex/url/URL.h>
#include <Varnex/url/URLProtocol.h>
#include <Varnex/url/URLStream.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

class URLEnv : public Varnex::URLImpl {
public:
    explicit URLEnv(std::string name) : URLImpl(""), name_(std::move(name)) {}

    [[nodiscard]] std::string getScheme() const override { return "env"; }
    [[nodiscard]] std::string toString() const override { return "env:" + name_; }
    [[nodiscard]] std::string toRelativeString(const URLImpl&) const override { return toString(); }
    [[nodiscard]] std::string getName() const override { return name_; }

    [[nodiscard]] Stream* open() const override {
        checkPolicy();
        const char* const value = std::getenv(name_.c_str());
        if (value == nullptr) throw Exception("Open error - no such variable");
        const std::string text = value;
        return makeStream(std::make_unique<std::stringbuf>(text), "text/plain", std::ssize(text));
    }

    /// The variable of that name.
    [[nodiscard]] URLImpl* createRelative(const std::string& text) const override {
        return createAbsolute(getScheme(), text);
    }

    /// Opens nothing yet: the text may come from anybody.
    static URLImpl* createAbsolute(const std::string&, const std::string& rest) {
        if (rest.empty()) throw Exception("Parse error - name is missing");
        return new URLEnv(rest);
    }

    static Protocol _envProtocol;

private:
    std::string name_;
};

// Registers the scheme before main begins.
Varnex::URLImpl::Protocol URLEnv::_envProtocol("env", &URLEnv::createAbsolute);

int main() try {
    const auto path = Varnex::URL::resolve(Varnex::URL(), "env:PATH");
    const std::unique_ptr<Varnex::URLImpl::Stream> stream(path->open());
    std::string text;
    std::getline(*stream, text);
    std::cout << path->toString() << " has " << stream->getContentLength() << " bytes: " << text << '\n';
    return text == std::getenv("PATH") ? 0 : 1;
} catch (const Varnex::URLImpl::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
