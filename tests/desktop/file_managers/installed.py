"""The program as a package installs it, for the process and all that it starts: nothing of the system is changed.

The staged files are laid over /usr in a mount namespace of the test's own.
"""
import os
import subprocess
import sys

SKIPPED = 77
_INSIDE = "OSTRA_TEST_SEES_THE_STAGE"
_OVERLAY = 'mount -t overlay overlay -o "lowerdir=$1/usr:/usr" /usr && shift && exec "$@"'


def _command(stage, *words):
    overlay = ["sh", "-c", _OVERLAY, "sh", stage]
    if os.geteuid() == 0:
        return ["unshare", "--mount", *overlay, *words]
    # Root of a namespace may mount, but shall not be who the file manager runs as.
    return ["unshare", "--user", "--map-root-user", "--mount", *overlay,
            "unshare", "--user", f"--map-user={os.getuid()}", f"--map-group={os.getgid()}", *words]


def see_installed(stage):
    """Starts this program again where the stage is installed. Where that cannot be, it ends, in CI as a failure."""
    if os.environ.pop(_INSIDE, None):
        return
    reason = None
    if not os.path.exists(os.path.join(stage, "usr", "bin", "ostra")):
        reason = f"{stage} is not a stage with the prefix /usr"
    else:
        trial = subprocess.run(_command(stage, "true"), capture_output=True, text=True, check=False, timeout=60)
        if trial.returncode != 0:
            reason = f"no file system can be laid over /usr here: {trial.stderr.strip()}"
    if reason:
        print(reason)
        sys.exit(1 if os.environ.get("CI") else SKIPPED)
    os.environ[_INSIDE] = "yes"
    command = _command(stage, sys.executable, "-B", *sys.argv)
    os.execvp(command[0], command)
