#pragma once

/// Default values about the vendor, for information files without them. Constants, usable from any thread.
namespace vendor {

inline constexpr auto kSupportAddress = "support@ravelin.example";
/// The root of the web site, with a trailing slash.
inline constexpr auto kSiteRoot = "https://ravelin.example/";
/// Identifies us to the store as the referrer of a buyer.
inline constexpr auto kAffiliateToken = "ravelin";

}  // namespace vendor
