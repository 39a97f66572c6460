file(REMOVE_RECURSE
  "libnorvane_tool.a"
)
