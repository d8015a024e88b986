#!/bin/sh
. /tarvo/sim/action
exit "$status"
