#include <Varnex/web/HtmlText.h>

namespace Varnex {

std::string htmlEscaped(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string htmlPage(std::string_view title) {
    const std::string text = htmlEscaped(title);
    return "<HTML>\n  <HEAD>\n    <TITLE>" + text + "</TITLE>\n  </HEAD>\n  <BODY>\n    <H1>" + text +
           "</H1>\n  </BODY>\n</HTML>\n";
}

}  // namespace Varnex
