#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/reports/HostInformation.h"

#include <QSysInfo>

#include <array>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <net/route.h>
#include <netdb.h>
#include <netinet/in.h>

namespace hostrules {

QString localName(const QString& hostName) {
    return hostName.isEmpty() ? QString() : makeString("%@.local", hostName.section(u'.', 0, 0));
}

QString firstAddress(const ifaddrs* list, bool ipv6) {
    const int family = ipv6 ? AF_INET6 : AF_INET;
    const socklen_t length = ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    for (const ifaddrs* interface = list; interface; interface = interface->ifa_next) {
        // Interfaces without an address are listed, too.
        if (!interface->ifa_addr || interface->ifa_addr->sa_family != family) continue;
        if ((interface->ifa_flags & IFF_UP) == 0) continue;
        if (QByteArrayView(interface->ifa_name).startsWith("lo")) continue;
        std::array<char, NI_MAXHOST> address{};
        if (::getnameinfo(interface->ifa_addr, length, address.data(), address.size(), nullptr, 0,
                          NI_NUMERICHOST) == 0)
            return QString::fromLatin1(address.data());
    }
    return ipv6 ? "::1" : "127.0.0.1";
}

bool hasDefaultRoute(const QString& table) {
    constexpr qsizetype kDestination = 1;
    constexpr qsizetype kFlags = 3;
    for (const QStringView line : text::lines(table)) {
        const QList<QStringView> fields = line.split(u'\t');
        if (fields.size() <= kFlags || fields[kDestination] != u"00000000") continue;
        const uint flags = fields[kFlags].toUInt(nullptr, 16);
        if ((flags & RTF_UP) != 0 && (flags & RTF_REJECT) == 0) return true;
    }
    return false;
}

}  // namespace hostrules

QString PXHostInformation::ipName() {
    constexpr int kSite = 1;
    const QString name = QSysInfo::machineHostName();
    if (name.isEmpty()) logError("Error: SCDynamicStoreCopyLocalHostName == NULL, %i", kSite);
    return hostrules::localName(name);
}

QString PXHostInformation::ipAddress(bool ipv6) {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) qFatal("The network interfaces can't be listed");
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
    return hostrules::firstAddress(list.get(), ipv6);
}

bool PXHostInformation::isOnline() {
    const auto routes = files::contents("/proc/net/route");
    return routes && hostrules::hasDefaultRoute(QString::fromLatin1(*routes));
}
