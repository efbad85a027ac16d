#include "support/Files.h"
#include "support/HostInformation.h"

#include <QFile>
#include <QSysInfo>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>

namespace {

QString numericAddress(const sockaddr* address, bool ipv6) {
    char text[INET6_ADDRSTRLEN] = {};
    const void* bytes =
        ipv6 ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr)
             : static_cast<const void*>(&reinterpret_cast<const sockaddr_in*>(address)->sin_addr);
    return QString::fromLatin1(::inet_ntop(address->sa_family, bytes, text, sizeof text));
}

}  // namespace

QString PXHostInformation::ipName() {
    const QString name = QSysInfo::machineHostName();
    return name.isEmpty() ? QString() : name.section(u'.', 0, 0) + ".local";
}

QString PXHostInformation::ipAddress(bool ipv6) {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) qFatal("The network interfaces can't be listed");
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
    for (const ifaddrs* interface = first; interface; interface = interface->ifa_next) {
        if (!interface->ifa_addr || (interface->ifa_flags & IFF_UP) == 0) continue;
        if (interface->ifa_addr->sa_family != (ipv6 ? AF_INET6 : AF_INET)) continue;
        if (QByteArray(interface->ifa_name).startsWith("lo")) continue;
        return numericAddress(interface->ifa_addr, ipv6);
    }
    return ipv6 ? "::1" : "127.0.0.1";
}

bool PXHostInformation::isOnline() {
    constexpr int kDestination = 1;
    const auto routes = files::contents("/proc/net/route");
    if (!routes) return false;
    const QList<QByteArray> lines = routes->split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() > kDestination && fields[kDestination] == "00000000") return true;
    }
    return false;
}
