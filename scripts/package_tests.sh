# The "package" suite of scripts/test.sh (sourced by it): the interface reference and its
# generator, `cmake --install` into a temporary prefix with hosts built out of tree (with
# find_package and with pkg-config), the Linux packages (.deb, .tar.gz) and the Windows zip
# with its import library in Microsoft's format. Work files go to $OUT/package.

PKG_WORK=$OUT/package

# --- the interface reference --------------------------------------------------------------
# Headers of one or two exports, whether the generator accepts them, and the export it must
# name when it refuses.
DOC_CASES=(
  'pass||/* Starts. */\nSECMOLRA_API bool SECMOLRA_A(void);'
  'pass||/* Forms of one operation share a comment. */\nSECMOLRA_API int64_t SECMOLRA_A(const char* k);\nSECMOLRA_API int64_t SECMOLRA_AEx(CusLoginInfo* i);\nSECMOLRA_API int64_t SECMOLRA_A_ASync(const char* k,\n                                     int64_t n);'
  'fail|SECMOLRA_A|SECMOLRA_API bool SECMOLRA_A(void);'
  'fail|PYSECMOLRA_Q|/* Q. */\nSECMOLRA_API int64_t SECMOLRA_Q(void);\n\nSECMOLRA_API int64_t PYSECMOLRA_Q(void);'
  'fail|SECMOLRA_B|/* A. */\nSECMOLRA_API bool SECMOLRA_A(void);\nSECMOLRA_API bool SECMOLRA_B(void);'
  'fail|SECMOLRA_A|/* An introduction, followed by a blank line. */\n\nSECMOLRA_API bool SECMOLRA_A(void);'
  'fail|SECMOLRA_AEx|/* A. */\nSECMOLRA_API bool SECMOLRA_A(void);\n\nSECMOLRA_API bool SECMOLRA_AEx(void);'
)

check_interface_doc() {
  local case expect name header rc out
  python3 "$ROOT/scripts/interface_doc.py" --check || return 1
  for case in "${DOC_CASES[@]}"; do
    IFS='|' read -r expect name header <<<"$case"
    printf '%b\n' "$header" >"$PKG_WORK/case.h"
    rc=0
    out=$(python3 "$ROOT/scripts/interface_doc.py" --header "$PKG_WORK/case.h" \
          --output "$PKG_WORK/case.md" 2>&1) || rc=$?
    if [ "$expect" = pass ] && [ $rc -ne 0 ]; then
      printf 'generator refused a documented header:\n%b\n%s\n' "$header" "$out"; return 1
    fi
    if [ "$expect" = fail ] && { [ $rc -eq 0 ] || ! grep -q "$name has no comment" <<<"$out"; }; then
      printf 'generator did not name %s as uncommented in:\n%b\n%s\n' "$name" "$header" "$out"; return 1
    fi
  done
  echo "interface reference: up to date; generator cases: ${#DOC_CASES[@]} passed"
}

# --- helpers --------------------------------------------------------------------------------
# expect_listed LISTING PREFIX FILE...: each FILE, under PREFIX, is a line of LISTING.
expect_listed() {
  local listing=$1 prefix=$2 f missing=()
  shift 2
  for f in "$@"; do grep -qxF "$prefix$f" <<<"$listing" || missing+=("$f"); done
  [ ${#missing[@]} -eq 0 ] && return 0
  printf 'missing under %s: %s\n' "$prefix" "${missing[*]}"
  return 1
}

# expect_run DIR RC PATTERN COMMAND...: runs COMMAND in DIR; its exit code must be RC and its
# output must match the extended regular expression PATTERN.
expect_run() {
  local dir=$1 want=$2 pattern=$3 rc=0 out
  shift 3
  out=$(cd "$dir" && LC_ALL=C.UTF-8 timeout 60 "$@" 2>&1) || rc=$?
  if [ $rc -ne "$want" ] || ! grep -Eq -- "$pattern" <<<"$out"; then
    printf '%s (in %s): exit %s, wanted %s and /%s/; output:\n%s\n' "$*" "$dir" "$rc" "$want" \
      "$pattern" "$out" | head -n 40
    return 1
  fi
}

# run_folder DIR PREFIX: DIR becomes a folder a host runs in: the simulated transport as
# ./kelapi50.dll and the examples' molra.ini, both taken from the installed tree PREFIX.
run_folder() {
  mkdir -p "$1"
  cp "$2/lib/secmolra/kelapi50.dll" "$1/kelapi50.dll"
  cp "$2/share/secmolra/examples/molra.ini" "$1/molra.ini"
}

# What an installation holds on Linux (the Debian package and the tarball hold the same).
LINUX_FILES=(bin/molra-simd include/secmolra.h lib/libsecmolra.so lib/libsecmolra.so.0 lib/secmolra/kelapi50.dll
             lib/cmake/secmolra/secmolraConfig.cmake lib/cmake/secmolra/secmolraConfigVersion.cmake
             lib/cmake/secmolra/secmolraTargets.cmake lib/pkgconfig/secmolra.pc
             share/secmolra/examples/CMakeLists.txt share/secmolra/examples/hello.cpp
             share/secmolra/examples/trade.cpp share/secmolra/examples/host_support.h
             share/secmolra/examples/molra.ini share/doc/secmolra/configuration.md
             share/doc/secmolra/interface.md share/doc/secmolra/hosts.md)

# The example hosts against an installed kit: (folder, exit code, output pattern, command).
# The folders: "run" holds the transport and molra.ini, "empty" nothing.
host_cases() {
  local bin=$1 run=$2 empty=$3
  expect_run "$run" 0 'kit started; last error 0' "$bin/molra_hello" &&
  expect_run "$run" 0 'replies received: [1-9]' "$bin/molra_trade" ./ SIM 1001 111111 &&
  expect_run "$empty" 2 "no transport: tried $empty/kelapi50.dll" "$bin/molra_hello" &&
  expect_run "$empty" 2 "no configuration: tried $empty/molra.ini$" "$bin/molra_hello" &&
  expect_run "$run" 2 "no configuration: tried $run/conf/molra.ini$" "$bin/molra_trade" conf/ SIM &&
  expect_run "$run" 2 "tried $run/confmolra.ini \(give the profile folder with its trailing" \
    "$bin/molra_trade" conf SIM &&
  # The kit's GBK message, converted for the UTF-8 terminal.
  expect_run "$run" 1 'SECMOLRA_TradeLogin failed: -221 配置名、客户号、交易密码不能为空' \
    "$bin/molra_trade" ./ SIM "" 111111
}

# The installed server starts on a free loopback port, says where, and stops on SIGTERM.
check_installed_server() {
  local out=$PKG_WORK/simd.out pid line
  "$1" --listen 127.0.0.1:0 >"$out" 2>"$PKG_WORK/simd.err" &
  pid=$!
  for _ in $(seq 100); do
    line=$(head -n1 "$out")
    [ -n "$line" ] && break
    sleep 0.1
  done
  kill -TERM "$pid" 2>/dev/null
  wait "$pid" || { echo "molra-simd exited $? on SIGTERM"; cat "$PKG_WORK/simd.err"; return 1; }
  [[ $line =~ ^listening\ on\ 127\.0\.0\.1:[1-9][0-9]*$ ]] ||
    { echo "molra-simd said: '$line'"; cat "$PKG_WORK/simd.err"; return 1; }
  echo "installed molra-simd: $line, stopped on SIGTERM"
}

# --- install ---------------------------------------------------------------------------------
check_install() {
  local prefix=$PKG_WORK/prefix share=$PKG_WORK/prefix/share listing
  cmake --install "$OUT/linux" --prefix "$prefix" >"$PKG_WORK/install.log" 2>&1 ||
    { cat "$PKG_WORK/install.log"; return 1; }
  listing=$(cd "$prefix" && find . \( -type f -o -type l \) | sed 's|^\./||')
  expect_listed "$listing" "" "${LINUX_FILES[@]}" || return 1

  # find_package: the installed examples, built on their own.
  cmake -S "$share/secmolra/examples" -B "$PKG_WORK/examples" -G Ninja \
        -DCMAKE_PREFIX_PATH="$prefix" >"$PKG_WORK/examples.log" 2>&1 &&
    cmake --build "$PKG_WORK/examples" >>"$PKG_WORK/examples.log" 2>&1 ||
    { cat "$PKG_WORK/examples.log"; return 1; }
  mkdir -p "$PKG_WORK/empty"
  host_cases "$PKG_WORK/examples" "$PKG_WORK/examples" "$PKG_WORK/empty" || return 1

  # pkg-config: a host in C (the header must serve C hosts too).
  cat >"$PKG_WORK/host.c" <<'EOF'
#include <stdio.h>
#include "secmolra.h"
int main(void) {
  char msg[1024];
  if (!SECMOLRA_Init()) return 1;
  long long code = SECMOLRA_TradeLogin("SIM", "1001", "111111");
  printf("C host: token %s, last error %lld\n", code > 0 ? "yes" : "no",
         (long long)SECMOLRA_GetLastError(msg));
  return SECMOLRA_Exit() && code > 0 ? 0 : 1;
}
EOF
  local pc=(env PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config)
  cc -std=c11 -Wall -Werror -o "$PKG_WORK/c_host" "$PKG_WORK/host.c" $("${pc[@]}" --cflags --libs secmolra) \
     -Wl,-rpath,"$("${pc[@]}" --variable=libdir secmolra)" || return 1
  run_folder "$PKG_WORK/c_run" "$prefix"
  expect_run "$PKG_WORK/c_run" 0 'C host: token yes' "$PKG_WORK/c_host" || return 1
  check_installed_server "$prefix/bin/molra-simd" || return 1
  echo "install: $(wc -l <<<"$listing") files; find_package and pkg-config hosts built and run"
}

# --- Linux packages --------------------------------------------------------------------------
# Every library that a shipped ELF file needs must come from a package the .deb depends on.
check_deb_depends() {
  local deb=$1 tree=$2 depends f lib owners missing=()
  depends=$(dpkg-deb -f "$deb" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//')
  for f in $(find "$tree" -type f); do
    file -b "$f" | grep -q '^ELF' || continue
    for lib in $(objdump -p "$f" | awk '$1 == "NEEDED" {print $2}'); do
      owners=$(dpkg -S "*/$lib" 2>/dev/null | cut -d: -f1 | sort -u)
      [ -n "$owners" ] && grep -qxF -f <(echo "$owners") <<<"$depends" || missing+=("$lib (of ${f##*/})")
    done
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  printf 'the .deb depends on "%s" but does not cover: %s\n' "$(dpkg-deb -f "$deb" Depends)" "${missing[*]}"
  return 1
}

check_linux_packages() {
  local dir=$OUT/linux deb tgz tree=$PKG_WORK/deb share
  rm -f "$dir"/secmolra*.deb "$dir"/secmolra-*.tar.gz
  (cd "$dir" && cpack -G 'DEB;TGZ') >"$PKG_WORK/cpack-linux.log" 2>&1 || { cat "$PKG_WORK/cpack-linux.log"; return 1; }
  deb=$(ls "$dir"/secmolra_*_amd64.deb) && tgz=$(ls "$dir"/secmolra-*-Linux.tar.gz) || return 1
  expect_listed "$(dpkg-deb -c "$deb" | awk '{print $6}')" ./usr/ "${LINUX_FILES[@]}" || return 1
  expect_listed "$(tar tzf "$tgz")" "$(basename "$tgz" .tar.gz)/" "${LINUX_FILES[@]}" || return 1

  dpkg-deb -x "$deb" "$tree"
  check_deb_depends "$deb" "$tree" || return 1
  # A host built against the unpacked package through its pkg-config file.
  share=$tree/usr/share
  local pc=(env PKG_CONFIG_PATH="$tree/usr/lib/pkgconfig" pkg-config)
  c++ -std=c++17 -o "$PKG_WORK/deb_trade" "$share/secmolra/examples/trade.cpp" \
      $("${pc[@]}" --cflags --libs secmolra) -Wl,-rpath,"$("${pc[@]}" --variable=libdir secmolra)" || return 1
  run_folder "$PKG_WORK/deb_run" "$tree/usr"
  expect_run "$PKG_WORK/deb_run" 0 'replies received: [1-9]' "$PKG_WORK/deb_trade" ./ SIM 1001 111111 || return 1
  echo "linux packages: $(basename "$deb") (Depends: $(dpkg-deb -f "$deb" Depends)), $(basename "$tgz");" \
       "host built against the unpacked .deb"
}

# --- Windows zip -----------------------------------------------------------------------------
WINDOWS_FILES=(bin/secmolra.dll bin/molra-simd.exe include/secmolra.h lib/secmolra.lib lib/secmolra.def
               lib/libsecmolra.dll.a lib/secmolra/kelapi50.dll README-windows.md
               lib/cmake/secmolra/secmolraConfig.cmake lib/pkgconfig/secmolra.pc
               share/secmolra/examples/hello.cpp share/secmolra/examples/molra.ini
               share/doc/secmolra/interface.md)

dll_exports() {
  x86_64-w64-mingw32-objdump -p "$1" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' |
    awk 'NR>1 && NF {print $NF}' | sort
}

# secmolra.lib must be an import library in Microsoft's format (one short import member per
# export) that defines NAME and __imp_NAME for every export of the DLL; the .def lists them.
check_import_library() {
  local top=$1 exports symbols missing=() name members
  exports=$(dll_exports "$top/bin/secmolra.dll")
  [ -n "$exports" ] || { echo "secmolra.dll: no exports read"; return 1; }
  symbols=$(llvm-nm "$top/lib/secmolra.lib" | awk 'NF >= 2 {print $NF}' | sort -u)
  for name in $exports; do
    grep -qxF "$name" <<<"$symbols" && grep -qxF "__imp_$name" <<<"$symbols" || missing+=("$name")
  done
  [ ${#missing[@]} -eq 0 ] || { echo "secmolra.lib lacks: ${missing[*]}" | head -c 2000; return 1; }
  members=$(llvm-readobj "$top/lib/secmolra.lib" | grep -cx 'Format: COFF-import-file')
  [ "$members" -eq "$(wc -l <<<"$exports")" ] ||
    { echo "secmolra.lib: $members short import members for $(wc -l <<<"$exports") exports"; return 1; }
  diff <(awk 'f && NF {print $1} /^EXPORTS/ {f = 1}' "$top/lib/secmolra.def" | sort) <(echo "$exports") ||
    { echo "secmolra.def differs from the DLL's exports (above)"; return 1; }
  echo "secmolra.lib: $members exports, Microsoft import format; secmolra.def matches the DLL"
}

# A host built against the unpacked zip with secmolra.lib (GNU ld reads Microsoft's import
# format too), run under Wine: it trades on the simulated back end, and in an empty folder
# names the transport it looked for.
check_windows_host() {
  local top=$1 run=$PKG_WORK/winrun rc=0
  mkdir -p "$run/empty"
  x86_64-w64-mingw32-g++-posix -std=c++17 -O1 -static -I "$top/include" -o "$run/molra_trade.exe" \
    "$top/share/secmolra/examples/trade.cpp" "$top/lib/secmolra.lib" || return 1
  cp "$top/bin/secmolra.dll" "$top/lib/secmolra/kelapi50.dll" "$top/share/secmolra/examples/molra.ini" "$run/"
  start_wine || return 1
  expect_run "$run" 0 'replies received: [1-9]' "$WINE_BIN/wine64" molra_trade.exe ./ SIM 1001 111111 &&
    expect_run "$run/empty" 2 'no transport: tried Z:.*\\empty\\kelapi50\.dll' \
      "$WINE_BIN/wine64" ../molra_trade.exe ./ SIM || rc=1
  stop_wine
  return $rc
}

check_windows_package() {
  local dir=$OUT/windows zip top
  rm -f "$dir"/secmolra-*-win64.zip
  (cd "$dir" && cpack -G ZIP) >"$PKG_WORK/cpack-windows.log" 2>&1 || { cat "$PKG_WORK/cpack-windows.log"; return 1; }
  zip=$(ls "$dir"/secmolra-*-win64.zip) || return 1
  top=$(basename "$zip" .zip)
  expect_listed "$(unzip -Z1 "$zip")" "$top/" "${WINDOWS_FILES[@]}" || return 1
  unzip -q -o "$zip" -d "$PKG_WORK/zip"
  check_import_library "$PKG_WORK/zip/$top" || return 1
  check_windows_host "$PKG_WORK/zip/$top" || return 1
  grep -q 'PYSECMOLRA_QueryFundInfo' "$PKG_WORK/zip/$top/README-windows.md" ||
    { echo "README-windows.md lacks the std::vector exports"; return 1; }
  echo "windows package: $(basename "$zip"); a host linked with secmolra.lib ran under Wine"
}

suite_package() {
  local rc=0
  rm -rf "$PKG_WORK"
  mkdir -p "$PKG_WORK"
  say "package: interface reference"
  timed "package: interface doc" check_interface_doc || rc=1
  say "package: builds ($OUT/linux, $OUT/windows; what the packages hold)"
  BUILD_TARGETS="secmolra kelapi50 molra-simd" timed "package builds" build_linux || return 1
  BUILD_TARGETS="secmolra kelapi50 molra-simd secmolra_msvc_lib secmolra_readme_windows" \
    timed "package builds (windows)" build_windows || return 1
  say "package: install, .deb, .tar.gz, Windows zip"
  timed "package: install" check_install || rc=1
  timed "package: linux packages" check_linux_packages || rc=1
  timed "package: windows zip" check_windows_package || rc=1
  return $rc
}
