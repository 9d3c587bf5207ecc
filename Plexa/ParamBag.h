#pragma once

#include <Plexa/Export.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Plexa {

/// String parameters by name, in the order in which the names came first. Names compare by case, but a derived class
/// may choose otherwise. A value; one thread at a time.
class PLEXA_API ParamBag {
public:
    using Param = std::pair<std::string, std::string>;  ///< name and value
    using Params = std::vector<Param>;

    ParamBag() = default;
    ParamBag(const ParamBag&) = default;
    /// Leaves `other` empty.
    ParamBag(ParamBag&& other) noexcept;
    ParamBag& operator=(const ParamBag&) = default;
    ParamBag& operator=(ParamBag&& other) noexcept;
    virtual ~ParamBag();

    /// Stores `value`; a name that is there already keeps its place and its spelling.
    /// Gives what was stored, valid until the bag changes.
    std::string& setParam(std::string_view name, std::string_view value);
    /// The value, or `otherwise`.
    [[nodiscard]] std::string getParam(std::string_view name, const std::string& otherwise = {}) const;
    [[nodiscard]] bool hasParam(std::string_view name) const { return find(name) != nullptr; }
    /// Replaces `out` by all parameters.
    void getParams(Params& out) const;
    /// All parameters, without a copy; valid until the bag changes.
    [[nodiscard]] std::span<const Param> params() const { return {params_.data(), size_}; }

    /// Keeps the memory.
    void clear();
    [[nodiscard]] bool empty() const { return size_ == 0; }

protected:
    enum class Names { ByCase, IgnoringCase };

    explicit ParamBag(Names names) : names_(names) {}

private:
    /// More than this many are found by the index.
    static constexpr std::size_t kIndexed = 32;

    /// Room that the first parameter makes for the next ones: a browser's header has a dozen.
    static constexpr std::size_t kReserved = 16;

    [[nodiscard]] const Param* find(std::string_view name) const;
    /// Of names that are equally long.
    [[nodiscard]] bool isSame(std::string_view a, std::string_view b) const;
    [[nodiscard]] std::string keyOf(std::string_view name) const;
    void addToIndex(std::size_t position);

    Names names_ = Names::ByCase;
    Params params_;  // those from `size_` on are spare
    std::size_t size_ = 0;
    std::unordered_map<std::string, std::size_t> index_;  // empty for a few
};

}  // namespace Plexa
