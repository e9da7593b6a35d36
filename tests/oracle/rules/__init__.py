"""What the helper must decide, told a second time and independently of its own sources."""
