#!/usr/bin/python3
"""Prints what Python's mail parser makes of a message file."""
import email
import email.policy
import sys

with open(sys.argv[1], "rb") as file:
    message = email.message_from_binary_file(file, policy=email.policy.default)
for name in ("from", "to", "subject", "date", "message-id"):
    print(f"{name}: {message[name]}")
print("headers:", ",".join(sorted(name.lower() for name in message.keys())))
print("defects:", [str(d) for part in message.walk() for d in part.defects])


def show(part, depth):
    indent = "  " * depth
    print(f"{indent}{part.get_content_type()} | {part.get_filename()} | {part['content-id']}")
    if part.is_multipart():
        for child in part.iter_parts():
            show(child, depth + 1)
        return
    content = part.get_content()
    print(indent + (repr(content) if isinstance(content, str) else f"{len(content)} bytes"))


show(message, 0)
