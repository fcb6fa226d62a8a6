# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

with section("format"):
    line_width = 100

with section("markup"):
    # Comments are broken where their author broke them.
    enable_markup = False

with section("parse"):
    # Commands that the tool does not know, and would put together as if they had no keywords.
    additional_commands = {
        "configure_package_config_file": {
            "pargs": 2,
            "kwargs": {"INSTALL_DESTINATION": 1},
        },
        "generate_export_header": {
            "pargs": 1,
            "kwargs": {"BASE_NAME": 1, "EXPORT_MACRO_NAME": 1, "EXPORT_FILE_NAME": 1},
        },
        "qt6_add_resources": {
            "pargs": "*",
            "kwargs": {"OPTIONS": "*"},
        },
        "vidlets_add_test": {
            "flags": ["DISPLAY"],
            "kwargs": {"NAME": 1, "SOURCES": "*", "LIBRARIES": "*"},
        },
    }
