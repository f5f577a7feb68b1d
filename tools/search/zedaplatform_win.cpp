// The search program's view of a Windows machine: its own path from the loader, host
// lists in the user's roaming profile (%APPDATA%) and in %PROGRAMDATA%, interfaces and
// neighbours from the IP Helper API. Texts are in the process's code page, as the
// command line and the file calls use it.
#include "zedaplatform.h"

#include "zedafiles.h"
#include "zedanetworks.h"

#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <windows.h>

#include "zedaifflags.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

const char* const UserHostListHint = "%APPDATA%\\panomat-set\\ZEDA.conf";
const char* const SystemHostListHint = "%PROGRAMDATA%\\panomat-set\\ZEDA.conf";

namespace {

std::string narrow(const wchar_t* text) {
    const int n = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (n <= 1)
        return {};
    std::string out(size_t(n - 1), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, -1, out.data(), n, nullptr, nullptr);
    return out;
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

uint32_t ipv4Of(const SOCKADDR* a) {
    return a && a->sa_family == AF_INET
               ? ntohl(reinterpret_cast<const sockaddr_in*>(a)->sin_addr.s_addr)
               : 0;
}

} // namespace

std::string programFolder(const char*) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(nullptr, path.data(), DWORD(path.size()));
        if (n == 0)
            return ".";
        if (n < path.size()) {
            path.resize(n);
            break;
        }
        path.resize(path.size() * 2);
    }
    const std::string self = narrow(path.c_str());
    const size_t slash = self.find_last_of("\\/");
    return slash == std::string::npos ? "." : self.substr(0, slash);
}

std::vector<std::string> configFolders() {
    std::vector<std::string> folders;
    for (const char* name : {"APPDATA", "PROGRAMDATA"})
        if (const std::string folder = environment(name); !folder.empty())
            folders.push_back(folder);
    return folders;
}

std::string shownPath(const std::string& path) {
    return escaped(path, 256);
}

std::unordered_map<uint32_t, std::string> neighbourMacs() {
    std::unordered_map<uint32_t, std::string> table;
    MIB_IPNET_TABLE2* rows = nullptr;
    if (GetIpNetTable2(AF_INET, &rows) != NO_ERROR)
        return table;
    for (ULONG i = 0; i < rows->NumEntries; ++i) {
        const MIB_IPNET_ROW2& row = rows->Table[i];
        // As on Linux: entries being resolved or unreachable, and empty addresses, are
        // no MACs.
        if (row.State == NlnsIncomplete || row.State == NlnsUnreachable ||
            row.PhysicalAddressLength != 6)
            continue;
        const UCHAR* m = row.PhysicalAddress;
        if (!(m[0] | m[1] | m[2] | m[3] | m[4] | m[5]))
            continue;
        char mac[18];
        std::snprintf(mac, sizeof mac, "%02X-%02X-%02X-%02X-%02X-%02X", m[0], m[1], m[2], m[3],
                      m[4], m[5]);
        table[ipv4Of(reinterpret_cast<const SOCKADDR*>(&row.Address.Ipv4))] = mac;
    }
    FreeMibTable(rows);
    return table;
}

std::vector<InterfaceAddress> machineInterfaces() {
    std::vector<InterfaceAddress> result;
    const ULONG flags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST |
                        GAA_FLAG_SKIP_DNS_SERVER | GAA_FLAG_SKIP_FRIENDLY_NAME;
    ULONG size = 16 * 1024;
    std::unique_ptr<char[]> buffer;
    ULONG rc = ERROR_BUFFER_OVERFLOW;
    // The list may grow between the two calls; a few tries are enough.
    for (int attempt = 0; attempt < 4 && rc == ERROR_BUFFER_OVERFLOW; ++attempt) {
        buffer = std::make_unique<char[]>(size);
        rc = GetAdaptersAddresses(AF_INET, flags & ~GAA_FLAG_SKIP_FRIENDLY_NAME, nullptr,
                                  reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.get()), &size);
    }
    if (rc != NO_ERROR)
        return result;
    constexpr size_t MaxAddresses = 4096; // as on Linux
    for (auto* a = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(buffer.get());
         a && result.size() < MaxAddresses; a = a->Next) {
        unsigned iff = 0;
        if (a->OperStatus == IfOperStatusUp)
            iff |= IFF_UP | IFF_RUNNING;
        if (a->IfType == IF_TYPE_SOFTWARE_LOOPBACK)
            iff |= IFF_LOOPBACK;
        else if (a->IfType == IF_TYPE_PPP)
            iff |= IFF_POINTOPOINT;
        else
            iff |= IFF_BROADCAST;
        const std::string name = a->FriendlyName && *a->FriendlyName ? narrow(a->FriendlyName)
                                                                     : std::string(a->AdapterName);
        for (const IP_ADAPTER_UNICAST_ADDRESS* u = a->FirstUnicastAddress;
             u && result.size() < MaxAddresses; u = u->Next) {
            const uint32_t address = ipv4Of(u->Address.lpSockaddr);
            if (!address)
                continue;
            const int prefix = std::min<int>(u->OnLinkPrefixLength, 32);
            InterfaceAddress i;
            i.name = name;
            i.flags = iff;
            i.address = address;
            i.netmask = prefix == 0 ? 0 : ~uint32_t(0) << (32 - prefix);
            result.push_back(std::move(i));
        }
    }
    return result;
}
