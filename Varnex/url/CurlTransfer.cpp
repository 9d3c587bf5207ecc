#include <Varnex/url/CurlTransfer.h>

#include <Varnex/url/CurlPool.h>
#include <Varnex/url/Quietly.h>
#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

#include <sys/socket.h>

namespace Varnex {

namespace {

constexpr long kNever = std::numeric_limits<int>::max();

/// Characters that a request line can have; a URL text can have others in its query.
const std::string kPrintable = "%:/?#[]@&=+;|^`{}\"<>\\";

void initialiseOnce() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_ALL) != CURLE_OK) throw URLImpl::Exception("");
    });
}

std::string serverOf(std::string url) {
    std::string scheme, authority;
    URLImpl::parseScheme(url, scheme);
    URLImpl::parseAuthority(url, authority);
    return scheme + "://" + authority;
}

CurlTransfer& self(void* transfer) {
    return *static_cast<CurlTransfer*>(transfer);
}

}  // namespace

CurlTransfer::CurlTransfer(const std::string& url, std::shared_ptr<const LoadOptions> options,
                           ConnectionDelegate& delegate)
    : options_(std::move(options)),
      delegate_(delegate),
      server_(serverOf(url)),
      isFtp_(server_.starts_with("ftp:")),
      guard_(URLPolicy::getCurrent(), !options_->proxy.empty()) {
    initialiseOnce();
    easy_.reset(curl_easy_init());
    multi_ = CurlPool::take(server_);
    if (easy_ == nullptr || multi_ == nullptr) throw URLImpl::Exception("");
    setRequest(url);
    setLimits();
    setCallbacks();
    if (curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK) throw URLImpl::Exception("");
}

CurlTransfer::~CurlTransfer() {
    curl_multi_remove_handle(multi_.get(), easy_.get());
    quietly([&] { return CurlPool::keep(server_, std::move(multi_)), true; }, false);
}

template <class T>
void CurlTransfer::set(CURLoption option, T value) {
    const CURLcode result = curl_easy_setopt(easy_.get(), option, value);
    if (result != CURLE_OK) throw URLImpl::Exception(curl_easy_strerror(result));
}

void CurlTransfer::setRequest(const std::string& url) {
    std::string text = url;
    URLImpl::encodeUnsafeCharacters(text, kPrintable);
    set(CURLOPT_URL, text.c_str());
    set(CURLOPT_PROTOCOLS_STR, isFtp_ ? "ftp" : "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_USERAGENT, "Varnex");
    // Not the environment's choices.
    set(CURLOPT_PROXY, options_->proxy.c_str());
    set(CURLOPT_NOPROXY, "*");
    if (!options_->proxy.empty()) set(CURLOPT_NOPROXY, "");
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_FTP_SKIP_PASV_IP, 1L);
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    if (options_->offset > 0 && isFtp_) set(CURLOPT_RESUME_FROM_LARGE, static_cast<curl_off_t>(options_->offset));
    if (options_->offset > 0 && !isFtp_) set(CURLOPT_RANGE, (std::to_string(options_->offset) + "-").c_str());
    addHeader();
}

void CurlTransfer::addHeader() {
    MessageHeader checked;
    for (const auto& [name, value] : options_->header.params()) {
        if (!checked.setChecked(name, value)) throw URLImpl::Exception("Open error - invalid header");
        curl_slist* const list =
            curl_slist_append(header_.get(), (value.empty() ? name + ";" : name + ": " + value).c_str());
        if (list == nullptr) throw URLImpl::Exception("");
        static_cast<void>(header_.release());
        header_.reset(list);
    }
    set(CURLOPT_HTTPHEADER, header_.get());
}

void CurlTransfer::setLimits() {
    const long redirects = options_->maxRedirects > 0 ? options_->maxRedirects : -1;
    const auto connect = options_->connectTime.count();
    set(CURLOPT_FOLLOWLOCATION, options_->followRedirects ? 1L : 0L);
    set(CURLOPT_MAXREDIRS, redirects);
    set(CURLOPT_CONNECTTIMEOUT_MS, connect > 0 ? std::min<long>(connect, kNever) : kNever);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_BUFFERSIZE, kReceiveSize);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    if (options_->authorities.empty()) return;
    set(CURLOPT_CAINFO, options_->authorities.c_str());
    set(CURLOPT_CAPATH, nullptr);
}

void CurlTransfer::setCallbacks() {
    set(CURLOPT_ERRORBUFFER, error_);
    set(CURLOPT_HEADERDATA, this);
    set(
        CURLOPT_HEADERFUNCTION, +[](char* s, std::size_t, std::size_t n, void* transfer) -> std::size_t {
            return quietly([&] { return self(transfer).onHeader({s, n}); }, false) ? n : 0;
        });
    set(CURLOPT_WRITEDATA, this);
    set(
        CURLOPT_WRITEFUNCTION, +[](char* s, std::size_t, std::size_t n, void* transfer) {
            return quietly([&] { return self(transfer).onData({s, n}); }, std::size_t{0});
        });
    set(CURLOPT_OPENSOCKETDATA, this);
    set(
        CURLOPT_OPENSOCKETFUNCTION, +[](void* transfer, curlsocktype, curl_sockaddr* address) {
            return quietly([&] { return self(transfer).onSocket(*address); }, curl_socket_t{CURL_SOCKET_BAD});
        });
    set(CURLOPT_PREREQDATA, this);
    set(
        CURLOPT_PREREQFUNCTION, +[](void* transfer, char* address, char*, int, int) -> int {
            return quietly([&] { return self(transfer).onRequest(address); }, false) ? CURL_PREREQFUNC_OK
                                                                                     : CURL_PREREQFUNC_ABORT;
        });
}

std::string CurlTransfer::getUrl() const {
    const char* url = nullptr;
    curl_easy_getinfo(easy_.get(), CURLINFO_EFFECTIVE_URL, &url);
    return url == nullptr ? "" : url;
}

curl_socket_t CurlTransfer::onSocket(const curl_sockaddr& address) {
    if (!guard_.allowsUrl(getUrl()) || !guard_.allowsAddress(address.addr)) return CURL_SOCKET_BAD;
    return ::socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
}

/// Also over a connection that was there before.
bool CurlTransfer::onRequest(const std::string& address) {
    isConnected_ = true;
    lastProgress_ = Clock::now();
    return guard_.allowsUrl(getUrl()) && guard_.allowsAddress(address);
}

bool CurlTransfer::onHeader(std::string_view line) {
    isConnected_ = true;
    lastProgress_ = Clock::now();
    const bool isHead = !isFtp_ && !delegate_.hasAnswer();
    const bool isGood = isHead ? onHead(head_.add(line)) : otherLines_.count(line);
    if (!isGood) fail("malformed or too large header");
    return isGood;
}

bool CurlTransfer::onHead(ResponseHead::State state) {
    if (state == ResponseHead::State::Final) answer(announcedLength());
    // Of a redirect that is not followed, the first byte or the end tells.
    if (state == ResponseHead::State::Redirect) isConnected_ = false;
    return state != ResponseHead::State::Malformed;
}

std::size_t CurlTransfer::onData(std::string_view chunk) {
    lastProgress_ = Clock::now();
    if (!delegate_.hasAnswer()) answer(announcedLength());
    if (delegate_.didReceiveData(chunk)) return chunk.size();
    isPaused_ = true;
    return CURL_WRITEFUNC_PAUSE;
}

void CurlTransfer::answer(long long length) {
    delegate_.didReceiveResponse(length, head_.getMimeType());
}

long long CurlTransfer::announcedLength() const {
    curl_off_t length = -1;
    curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length;
}

void CurlTransfer::run(Condition condition) {
    lastProgress_ = Clock::now();  // what a reader does between its reads is no stall
    resume();
    while (!(delegate_.*condition)()) {
        perform();
        if (!(delegate_.*condition)()) wait();
    }
}

void CurlTransfer::resume() {
    if (!std::exchange(isPaused_, false)) return;
    const CURLcode result = curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
    if (result != CURLE_OK) end(result);
}

void CurlTransfer::perform() {
    int count = 0;
    if (const CURLMcode code = curl_multi_perform(multi_.get(), &count); code != CURLM_OK)
        return fail(curl_multi_strerror(code));
    while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &count))
        if (message->msg == CURLMSG_DONE) return end(message->data.result);
}

void CurlTransfer::wait() {
    const auto waited = Clock::now() - lastProgress_;
    if (isConnected_ && options_->stallTime.count() > 0 && waited > options_->stallTime)
        return fail("no data for " + std::to_string(options_->stallTime.count()) + " ms");
    if (options_->isCancelled && options_->isCancelled()) return fail("cancelled");
    curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(kTurn.count()), nullptr);
}

void CurlTransfer::end(CURLcode result) {
    if (delegate_.isOver()) return;
    if (result != CURLE_OK) return fail(error_[0] != '\0' ? error_ : curl_easy_strerror(result));
    if (!delegate_.hasAnswer() && !isFtp_ && !head_.isWhole()) return fail("the header ends in the middle");
    if (!delegate_.hasAnswer()) answer(0);  // there was no byte
    delegate_.didFinishLoading();
}

void CurlTransfer::fail(const std::string& reason) {
    if (!delegate_.isOver()) delegate_.didFailWithError(reason);
}

}  // namespace Varnex
