#include <Plexa/ParamBag.h>

#include <algorithm>

namespace Plexa {

namespace {

char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

ParamBag::ParamBag(ParamBag&& other) noexcept : names_(other.names_) {
    *this = std::move(other);
}

ParamBag& ParamBag::operator=(ParamBag&& other) noexcept {
    names_ = other.names_;
    params_.swap(other.params_);
    std::swap(size_, other.size_);
    index_.swap(other.index_);
    other.clear();
    return *this;
}

ParamBag::~ParamBag() = default;

std::string& ParamBag::setParam(std::string_view name, std::string_view value) {
    if (const Param* const known = find(name); known != nullptr)
        return params_[static_cast<std::size_t>(known - params_.data())].second = value;
    if (size_ < params_.size()) {
        params_[size_].first = name;
        params_[size_].second = value;
    } else {
        if (params_.empty()) params_.reserve(kReserved);
        params_.emplace_back(name, value);
    }
    if (size_ >= kIndexed) addToIndex(size_);
    return params_[size_++].second;
}

std::string ParamBag::getParam(std::string_view name, const std::string& otherwise) const {
    const Param* const param = find(name);
    return param == nullptr ? otherwise : param->second;
}

void ParamBag::getParams(Params& out) const {
    out.assign(params().begin(), params().end());
}

void ParamBag::clear() {
    if (!index_.empty()) index_.clear();
    size_ = 0;
}

const ParamBag::Param* ParamBag::find(std::string_view name) const {
    if (size_ > kIndexed) {
        const auto entry = index_.find(keyOf(name));
        return entry == index_.end() ? nullptr : &params_[entry->second];
    }
    for (const Param& param : params())
        if (param.first.size() == name.size() && isSame(param.first, name)) return &param;
    return nullptr;
}

bool ParamBag::isSame(std::string_view a, std::string_view b) const {
    if (names_ == Names::ByCase) return a == b;
    // From the end: it is rather the beginning that names of one length have in common.
    return std::equal(a.rbegin(), a.rend(), b.rbegin(), [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

std::string ParamBag::keyOf(std::string_view name) const {
    std::string key(name);
    if (names_ == Names::IgnoringCase) std::transform(key.begin(), key.end(), key.begin(), lowerCase);
    return key;
}

/// Called for each position from the first that needs it on, once it is filled.
void ParamBag::addToIndex(std::size_t position) {
    const std::size_t first = position == kIndexed ? 0 : position;
    for (std::size_t i = first; i <= position; ++i) index_.emplace(keyOf(params_[i].first), i);
}

}  // namespace Plexa
