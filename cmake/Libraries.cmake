# The libraries that are linked in instead of loaded, where that is possible: loading shared libraries takes most of the
# time of a small extraction. Targets: kolvex_hdf5, kolvex_zlib, kolvex_sqlite, kolvex_expat, kolvex_fmt, and kolvex_netcdf, which is
# loaded.
option(KOLVEX_STATIC_LIBRARIES "Link HDF5, fmt and the C++ library into the programs, and the C library into quarnish, where there are archives" ON)

pkg_check_modules(HDF5 REQUIRED IMPORTED_TARGET hdf5-serial)
find_package(fmt REQUIRED)

set(archives)
# Each needs the ones behind it.
foreach(name hdf5 sz aec z)
  find_library(KOLVEX_ARCHIVE_${name} lib${name}.a HINTS ${HDF5_LIBRARY_DIRS})
  list(APPEND archives ${KOLVEX_ARCHIVE_${name}})
endforeach()
add_library(kolvex_hdf5 INTERFACE)
target_include_directories(kolvex_hdf5 SYSTEM INTERFACE ${HDF5_INCLUDE_DIRS})
if(KOLVEX_STATIC_LIBRARIES AND NOT "${archives}" MATCHES "NOTFOUND")
  target_link_libraries(kolvex_hdf5 INTERFACE ${archives} ${CMAKE_DL_LIBS} m Threads::Threads)
else()
  target_link_libraries(kolvex_hdf5 INTERFACE PkgConfig::HDF5)
endif()

# Whether a program can have the C library in it and still lie anywhere in memory: there is an archive, and the compiler
# makes such code by itself.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
check_cxx_source_compiles("#include <cmath>
                           int data; int* volatile place = &data;
                           int main(int count, char**) { return place == nullptr || std::sin(count) > 1; }" KOLVEX_HAS_STATIC_PIE)
unset(CMAKE_REQUIRED_LINK_OPTIONS)

find_package(ZLIB REQUIRED)
add_library(kolvex_zlib INTERFACE)
if(KOLVEX_STATIC_LIBRARIES AND KOLVEX_ARCHIVE_z)
  target_include_directories(kolvex_zlib SYSTEM INTERFACE ${ZLIB_INCLUDE_DIRS})
  target_link_libraries(kolvex_zlib INTERFACE ${KOLVEX_ARCHIVE_z})
else()
  target_link_libraries(kolvex_zlib INTERFACE ZLIB::ZLIB)
endif()

find_package(SQLite3 REQUIRED)
find_library(KOLVEX_ARCHIVE_sqlite3 libsqlite3.a)
add_library(kolvex_sqlite INTERFACE)
if(KOLVEX_STATIC_LIBRARIES AND KOLVEX_ARCHIVE_sqlite3)
  target_include_directories(kolvex_sqlite SYSTEM INTERFACE ${SQLite3_INCLUDE_DIRS})
  target_link_libraries(kolvex_sqlite INTERFACE ${KOLVEX_ARCHIVE_sqlite3} ${CMAKE_DL_LIBS} m Threads::Threads)
else()
  target_link_libraries(kolvex_sqlite INTERFACE SQLite::SQLite3)
endif()

find_package(EXPAT REQUIRED)
find_library(KOLVEX_ARCHIVE_expat libexpat.a)
add_library(kolvex_expat INTERFACE)
if(KOLVEX_STATIC_LIBRARIES AND KOLVEX_ARCHIVE_expat)
  target_include_directories(kolvex_expat SYSTEM INTERFACE ${EXPAT_INCLUDE_DIRS})
  target_link_libraries(kolvex_expat INTERFACE ${KOLVEX_ARCHIVE_expat} m)
else()
  target_link_libraries(kolvex_expat INTERFACE EXPAT::EXPAT)
endif()

if(KOLVEX_STATIC_LIBRARIES)
  add_library(kolvex_fmt STATIC ${CMAKE_CURRENT_LIST_DIR}/fmt.cpp)
  target_compile_features(kolvex_fmt PUBLIC cxx_std_20)
else()
  add_library(kolvex_fmt INTERFACE)
  target_link_libraries(kolvex_fmt INTERFACE fmt::fmt)
endif()

# For Exodus II; without it that format is not in the build. Only one small program is linked with it.
option(KOLVEX_NETCDF "Import formats that are netCDF files, where the netCDF library is there" ON)
pkg_check_modules(NETCDF IMPORTED_TARGET netcdf)
if(KOLVEX_NETCDF AND NETCDF_FOUND)
  add_library(kolvex_netcdf INTERFACE)
  target_link_libraries(kolvex_netcdf INTERFACE PkgConfig::NETCDF)
else()
  set(KOLVEX_NETCDF OFF)
endif()
