"""Installs missing peers: Debian packages with apt-get, npm modules into a separate folder."""
import os
import shutil
import subprocess

# sharp 0.35 and later need node 20; Debian 12 has node 18.
OLD_NODE, SHARP_FOR_OLD_NODE = 20, "sharp@0.34"


def attempt(command, what):
    """Runs a command without output; prints one line if it fails."""
    try:
        done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                              env={**os.environ, "DEBIAN_FRONTEND": "noninteractive"})
    except OSError as error:
        print(f"peers: cannot install {what}: {error}")
        return False
    if done.returncode != 0:
        lines = done.stderr.strip().splitlines()
        print(f"peers: cannot install {what}: {lines[-1] if lines else 'no message'}")
    return done.returncode == 0


def install_packages(packages):
    if not packages:
        return
    root = [] if os.geteuid() == 0 else ["sudo", "-n"]
    if not shutil.which("apt-get") or (root and not shutil.which("sudo")):
        print(f"peers: to race these too, install them with apt-get as root: {' '.join(packages)}")
        return
    print("installing " + " ".join(packages), flush=True)
    if attempt([*root, "apt-get", "update"], "packages (apt-get update)"):
        attempt([*root, "apt-get", "install", "-y", "--no-install-recommends", *packages], " ".join(packages))


def node_version():
    try:
        version = subprocess.run(["node", "--version"], capture_output=True, text=True).stdout
        return int(version.strip("v\n").split(".")[0])
    except (OSError, ValueError):
        return 0


def install_modules(modules, folder):
    if not modules:
        return
    if not shutil.which("npm"):
        print(f"peers: npm is not installed, so these do not race: {' '.join(modules)}")
        return
    wanted = [SHARP_FOR_OLD_NODE if module == "sharp" and node_version() < OLD_NODE else module for module in modules]
    print("installing " + " ".join(wanted), flush=True)
    folder.mkdir(parents=True, exist_ok=True)
    attempt(["npm", "install", "--prefix", str(folder), "--no-audit", "--no-fund", *wanted], " ".join(wanted))


def install_missing(peers, npm, programs):
    """`programs`: other programs and their packages."""
    install_packages([package for program, package in programs.items() if not shutil.which(program)])
    missing = [peer for peer in peers if not peer.version()]
    packages = dict.fromkeys(package for peer in missing for package in peer.packages
                             if not shutil.which({"nodejs": "node", "npm": "npm"}.get(package, "")))
    install_packages(list(packages))
    install_modules([module for peer in missing for module in peer.modules], npm)
