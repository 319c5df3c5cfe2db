// Live results: what is typed is searched for without a reload.
