# What the scripts share: saying what they do, stopping with a reason, installing packages.
# shellcheck shell=bash

stage="starting"
stage_begin=$SECONDS

# Announces the next stage, with the time that the last one took.
say() {
  if [ "$stage" != "starting" ]; then printf '    (%d s)\n' $((SECONDS - stage_begin)); fi
  stage="$1"
  stage_begin=$SECONDS
  printf '==> %s\n' "$stage"
}

# Stops with a reason.
give_up() {
  printf '%s: stopped while %s: %s\n' "$(basename "$0")" "$stage" "$1" >&2
  exit 1
}

trap 'give_up "line $LINENO failed: $BASH_COMMAND"' ERR

# What building takes, what the demo runs, and what the tests want besides.
build_packages=(g++ cmake ninja-build pkg-config libhdf5-dev zlib1g-dev libexpat1-dev libflatbuffers-dev flatbuffers-compiler libcli11-dev libfmt-dev libsqlite3-dev nlohmann-json3-dev libnetcdf-dev)
demo_packages=(calculix-ccx)
bench_packages=(libbenchmark-dev python3 python3-h5py python3-netcdf4 python3-numpy)
test_packages=(calculix-ccx-test libgtest-dev libgmock-dev python3 python3-h5py python3-netcdf4 python3-numpy hdf5-tools netcdf-bin strace clang-format man-db shellcheck zsh)
slurm_packages=(slurmctld slurmd slurm-client munge)
browser_packages=(chromium firefox-esr nodejs npm xvfb)
soak_packages=(clang llvm libclang-rt-14-dev valgrind python3-vtk9 libexodusii-dev)
arm64_packages=(g++-aarch64-linux-gnu gcc-aarch64-linux-gnu qemu-user-static debootstrap)

# How long another apt is waited for, in seconds.
apt_patience=600

# Runs apt-get, waiting while another apt has one of its locks. The option that apt-get has for it waits for those of dpkg
# alone, and says nothing; those of the package lists and of downloaded packages it gives up at once.
apt_get() {
  local begin=$SECONDS timeout=0 log=$log_dir/apt.log
  until LC_ALL=C.UTF-8 apt-get -o DPkg::Lock::Timeout=$timeout "$@" >"$log" 2>&1; do
    if ! grep -Eq 'Could not get lock|is another process using it' "$log"; then
      give_up "apt-get $1 failed: $(tail -n 3 "$log")"
    fi
    if [ $((SECONDS - begin)) -ge "$apt_patience" ]; then
      give_up "another apt has been at work for $apt_patience s: $(grep -m 1 lock "$log")"
    fi
    if [ $timeout -eq 0 ]; then
      printf '    another apt is at work: waiting for it, %s s at most\n' "$apt_patience"
      timeout=5
    fi
    sleep 1
  done
}

# Installs those of the packages named that are missing.
install_packages() {
  local missing=() package
  for package in "$@"; do
    if ! dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed; then
      missing+=("$package")
    fi
  done
  if [ ${#missing[@]} -eq 0 ]; then return 0; fi
  printf '    missing: %s\n' "${missing[*]}"
  if [ "$(id -u)" -ne 0 ]; then give_up "only root can install packages: apt-get install ${missing[*]}"; fi
  export DEBIAN_FRONTEND=noninteractive
  apt_get update -qq
  apt_get install -y -qq --no-install-recommends "${missing[@]}"
}

# Configures and builds a preset.
build_preset() {
  cmake --preset "$1" >"$log_dir/configure-$1.log" 2>&1 || { cat "$log_dir/configure-$1.log" >&2; give_up "cmake failed"; }
  cmake --build --preset "$1" >"$log_dir/build-$1.log" 2>&1 || { tail -n 60 "$log_dir/build-$1.log" >&2; give_up "the build failed"; }
}

log_dir=build/logs
mkdir -p "$log_dir"
