file(REMOVE_RECURSE
  "libnorvane_aravis.a"
)
