// swift-tools-version:5.7
import PackageDescription

let package = Package(
  name: "Velmora",
  products: [.library(name: "Velmora", targets: ["Velmora"])],
  targets: [
    .systemLibrary(name: "CVelmora"),
    .target(name: "Velmora", dependencies: ["CVelmora"]),
    .systemLibrary(name: "CHost", pkgConfig: "x11"),
    .executableTarget(name: "Demo", dependencies: ["Velmora", "CHost"]),
  ])
