#include <Plexa/ParamBag.h>

#include <algorithm>

namespace Plexa {

namespace {

char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

ParamBag::~ParamBag() = default;

void ParamBag::setParam(std::string_view name, std::string_view value) {
    if (const Param* const known = find(name); known != nullptr) {
        params_[static_cast<std::size_t>(known - params_.data())].second = value;
        return;
    }
    if (size_ == params_.size()) params_.emplace_back();
    params_[size_].first = name;
    params_[size_].second = value;
    addToIndex(size_++);
}

std::string ParamBag::getParam(std::string_view name, const std::string& otherwise) const {
    const Param* const param = find(name);
    return param == nullptr ? otherwise : param->second;
}

void ParamBag::getParams(Params& out) const {
    out.assign(params().begin(), params().end());
}

void ParamBag::clear() {
    size_ = 0;
    index_.clear();
}

const ParamBag::Param* ParamBag::find(std::string_view name) const {
    if (size_ > kIndexed) {
        const auto entry = index_.find(keyOf(name));
        return entry == index_.end() ? nullptr : &params_[entry->second];
    }
    for (const Param& param : params())
        if (isSame(param.first, name)) return &param;
    return nullptr;
}

bool ParamBag::isSame(std::string_view a, std::string_view b) const {
    if (a.size() != b.size()) return false;
    if (names_ == Names::ByCase) return a == b;
    return std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

std::string ParamBag::keyOf(std::string_view name) const {
    std::string key(name);
    if (names_ == Names::IgnoringCase) std::transform(key.begin(), key.end(), key.begin(), lowerCase);
    return key;
}

/// Called for each position once it is filled.
void ParamBag::addToIndex(std::size_t position) {
    if (position < kIndexed) return;
    const std::size_t first = position == kIndexed ? 0 : position;
    for (std::size_t i = first; i <= position; ++i) index_.emplace(keyOf(params_[i].first), i);
}

}  // namespace Plexa
