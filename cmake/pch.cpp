// Holds the precompiled header of the widget modules; see KyBuild.cmake.
