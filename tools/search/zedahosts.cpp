#include "zedahosts.h"

#include "zedafiles.h"

#include <algorithm>
#include <charconv>

namespace {

// A decimal number of one to `digits` digits and nothing else.
std::optional<unsigned> decimal(std::string_view text, size_t digits) {
    unsigned value = 0;
    if (text.empty() || text.size() > digits)
        return std::nullopt;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

struct Range {
    uint32_t lo, hi; // both included
};

// The range of one entry, or the reason it is refused.
std::optional<Range> parseEntry(std::string_view entry, std::string* why) {
    Range r{};
    if (const size_t slash = entry.find('/'); slash != entry.npos) {
        const auto base = parseIpv4(entry.substr(0, slash));
        const auto prefix = decimal(entry.substr(slash + 1), 9);
        if (!base || !prefix || *prefix > 32) {
            *why = "not a network in CIDR form";
            return std::nullopt;
        }
        const uint32_t mask = *prefix == 0 ? 0 : ~uint32_t(0) << (32 - *prefix);
        r = {*base & mask, (*base & mask) | ~mask};
        if (*prefix <= 30) {
            ++r.lo;
            --r.hi;
        }
    } else if (const size_t dash = entry.find('-'); dash != entry.npos) {
        const auto lo = parseIpv4(entry.substr(0, dash));
        const std::string_view end = entry.substr(dash + 1);
        std::optional<uint32_t> hi;
        if (const auto octet = decimal(end, 3); lo && octet && *octet <= 255)
            hi = (*lo & 0xFFFFFF00u) | *octet;
        else
            hi = parseIpv4(end);
        if (!lo || !hi) {
            *why = "not an address, range or network";
            return std::nullopt;
        }
        if (*hi < *lo) {
            *why = "range ends before it starts";
            return std::nullopt;
        }
        r = {*lo, *hi};
    } else if (const auto a = parseIpv4(entry)) {
        r = {*a, *a};
    } else {
        *why = "not an address, range or network";
        return std::nullopt;
    }
    if (uint64_t(r.hi) - r.lo + 1 > uint64_t(HostList::MaxHosts)) {
        *why = "more than " + std::to_string(HostList::MaxHosts) + " hosts";
        return std::nullopt;
    }
    return r;
}

// Sorted ranges, overlapping and adjacent ones merged.
std::vector<Range> merged(std::vector<Range> ranges) {
    std::sort(ranges.begin(), ranges.end(),
              [](const Range& a, const Range& b) { return a.lo < b.lo; });
    std::vector<Range> out;
    for (const Range& r : ranges) {
        if (!out.empty() && uint64_t(r.lo) <= uint64_t(out.back().hi) + 1)
            out.back().hi = std::max(out.back().hi, r.hi);
        else
            out.push_back(r);
    }
    return out;
}

bool isSeparator(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f' || c == ',' || c == ';';
}

// The entries of one line, separated by blanks, commas or semicolons.
void addEntries(std::string_view line, size_t n, std::vector<Range>* ranges, HostList* list) {
    for (size_t start = 0; start < line.size();) {
        size_t stop = start;
        while (stop < line.size() && !isSeparator(line[stop]))
            ++stop;
        const std::string_view entry = line.substr(start, stop - start);
        start = stop + 1;
        if (entry.empty())
            continue;
        std::string why;
        if (const auto range = parseEntry(entry, &why)) {
            ranges->push_back(*range);
        } else if (++list->refused <= size_t(HostList::MaxErrorTexts)) {
            list->errors.push_back("line " + std::to_string(n) + ": '" + escaped(entry, 40) +
                                   "': " + why);
        }
    }
}

} // namespace

std::optional<uint32_t> parseIpv4(std::string_view text) {
    uint32_t a = 0;
    for (int part = 0; part < 4; ++part) {
        const size_t dot = text.find('.');
        if ((part == 3) != (dot == text.npos)) // exactly three dots
            return std::nullopt;
        const auto octet = decimal(text.substr(0, dot), 3);
        if (!octet || *octet > 255)
            return std::nullopt;
        a = (a << 8) | *octet;
        text.remove_prefix(part == 3 ? text.size() : dot + 1);
    }
    return a;
}

// Entries are kept as ranges and counted before any is expanded: a list of many
// large entries, or the same one many times, must not take memory in proportion to
// what it names.
HostList parseHostList(std::string_view text) {
    HostList result;
    std::vector<Range> ranges;
    for (size_t n = 1;; ++n) {
        const size_t eol = text.find('\n');
        const std::string_view line = text.substr(0, eol);
        addEntries(line.substr(0, line.find('#')), n, &ranges, &result);
        if (eol == text.npos)
            break;
        text.remove_prefix(eol + 1);
    }
    const std::vector<Range> all = merged(ranges);
    uint64_t total = 0;
    for (const Range& r : all)
        total += uint64_t(r.hi) - r.lo + 1;
    if (total > uint64_t(HostList::MaxHosts))
        result.errors.push_back("more than " + std::to_string(HostList::MaxHosts) +
                                " hosts in all; only the first " +
                                std::to_string(HostList::MaxHosts) + " are probed");
    result.hosts.reserve(size_t(std::min(total, uint64_t(HostList::MaxHosts))));
    for (const Range& r : all)
        for (uint64_t a = r.lo; a <= r.hi && result.hosts.size() < size_t(HostList::MaxHosts); ++a)
            result.hosts.push_back(uint32_t(a));
    return result;
}

std::string ipv4Text(uint32_t a) {
    return std::to_string(a >> 24) + '.' + std::to_string((a >> 16) & 0xFF) + '.' +
           std::to_string((a >> 8) & 0xFF) + '.' + std::to_string(a & 0xFF);
}
