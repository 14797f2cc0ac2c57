#!/bin/sh
mkdir -p "$1" && touch "$1/.made"
