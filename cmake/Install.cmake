# What is installed, by component: Runtime (the shared libraries), Development
# (headers, CMake package, pkg-config files), Samples, Documentation.
