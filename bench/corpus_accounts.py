#!/usr/bin/env python3
"""Writes passwd and group for the users of a corpus: corpus_accounts.py SUMMARY ETC-FOLDER.

The summary's "principals" say, for each user id, the primary group and the further ones.
"""
import json
import pathlib
import sys


def main():
    summary, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    principals = json.loads(summary.read_text())["principals"]
    passwd = ["root:x:0:0:System:/root:/bin/sh"]
    members = {}
    for user, groups in principals.items():
        passwd.append(f"u{user}:x:{user}:{groups[0]}:User {user}:/:/bin/sh")
        for group in groups:
            members.setdefault(group, [])
        for group in groups[1:]:
            members[group].append(f"u{user}")
    group = ["root:x:0:"] + [f"g{g}:x:{g}:{','.join(names)}" for g, names in sorted(members.items())]
    (folder / "passwd").write_text("\n".join(passwd) + "\n")
    (folder / "group").write_text("\n".join(group) + "\n")


if __name__ == "__main__":
    main()
