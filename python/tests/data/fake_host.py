#!/usr/bin/python3
"""A stand-in for the norvik host that ends as FAKE_HOST_STATUS says: it keeps
its command line in fake_host_args.json and, for status 0 or 3, writes the
water fixture as the --json file with a report beside it."""
import json
import os
import sys

args = sys.argv[1:]
with open("fake_host_args.json", "w") as f:
    json.dump(args, f)
status = int(os.environ.get("FAKE_HOST_STATUS", "0"))
if status < 0:
    os.kill(os.getpid(), -status)
if status in (1, 2):
    print("norvik: the library stopped the job" if status == 1 else
          "norvik: water.xyz, line 3: 'Xx' is not an element symbol", file=sys.stderr)
    sys.exit(status)
json_name = args[args.index("--json") + 1]
if os.environ.get("FAKE_HOST_NO_JSON"):
    sys.exit(status)
with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "water_freq.json")) as f:
    data = json.load(f)
data["status"], data["success"] = status, status == 0
data["files"] = {"report": json_name[:-5] + ".report"}
with open(json_name, "w") as f:
    json.dump(data, f)
with open(json_name[:-5] + ".report", "w") as f:
    f.write("fake report\n")
print("norvik: E(RHF) = -74.965901192 hartree")
if status == 3:
    print("norvik: SCF not converged in 3 cycles")
sys.exit(status)
